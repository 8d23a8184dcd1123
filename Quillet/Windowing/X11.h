#pragma once

#include <QRect>
#include <array>
#include <string>
#include <vector>

class QWidget;

/// What Qt doesn't ask of the X server. To be called on X11 and Xwayland alone.
namespace X11 {

/// Whether a program owns the selection. Compositors and trays each own one.
bool isOwned(const char* selection);

/// What the window manager calls itself; empty where there is none.
std::string windowManager();

/// What panels leave of all screens together, in their own pixels; empty where nobody tells.
QRect workArea();

/// The _NET_WM_STRUT_PARTIAL of each managed window that has one.
std::vector<std::array<int, 12>> struts();

/// Keeps a managed window out of task bars. To be called each time before the window is shown.
void leaveTaskBar(QWidget* window);

// Whether a native event reports a change of the stacking order, or that a tray may have come or
// gone.
bool isRestacking(const void* event);
bool isTrayChange(const void* event);

}  // namespace X11
