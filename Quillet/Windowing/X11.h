#pragma once

#include <QRect>
#include <array>
#include <string>
#include <vector>

class QWidget;

/// What Qt doesn't ask of the X server. To be called on X11 and Xwayland alone.
namespace X11 {

/// Whether a program owns the selection, as compositors and trays each own one of the screen's.
bool isOwned(const char* selection);

/// What the window manager calls itself; empty where there is none.
std::string windowManager();

/// What panels leave of all screens together, in their own pixels; empty where nobody tells.
QRect workArea();

/// The _NET_WM_STRUT_PARTIAL of each managed window that has one.
std::vector<std::array<int, 12>> struts();

/// Keeps a managed window out of task bars. To be called each time before the window is shown.
void leaveTaskBar(QWidget* window);

/// Whether a native event tells that the window manager put another window on top.
bool isRestacking(const void* event);

}  // namespace X11
