#pragma once

#include <xcb/xcb.h>

#include <QRect>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

class QWidget;

/// What the toolkit doesn't ask of the X server. Only `connection` and `cutCorners` may be called
/// without one.
namespace X11 {

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

/// The toolkit's; null where it runs on something else.
xcb_connection_t* connection();

/// XCB_ATOM_NONE where the server doesn't answer.
xcb_atom_t atom(const char* name);

/// Whether there is a program that owns the selection, as compositors and trays own one of the
/// screen's.
bool isOwned(const char* selection);

/// A property that is a list of numbers, for each of the windows; empty where it is missing.
std::vector<std::vector<uint32_t>> properties(const std::vector<xcb_window_t>& windows,
                                              xcb_atom_t name);

/// What the window manager calls itself; empty where there is none.
std::string windowManager();

/// What panels leave of all screens together, in their own pixels; empty where nobody tells.
QRect workArea();

/// Those that a window manager handles.
std::vector<xcb_window_t> managedWindows();

/// To be called for a window that a window manager handles, each time before it is shown.
void leaveTaskBar(QWidget* window);

/// Rounds a window's corners, by points, where they can't be transparent.
void cutCorners(QWidget* window, double radius);

}  // namespace X11
