#pragma once

#include <string_view>

class QWidget;

/// Which window system the program runs on. Everything that depends on it asks here.
namespace WindowSystem {

/// Before the application object: prefers Xwayland, where there is one, as a Wayland program can't
/// place its windows, keep them above others or on every workspace. False without any display.
bool choose();

bool isX11();  ///< Xwayland included.

/// Windows are X11's on a Wayland desktop: clicks and focus of other programs can't be seen.
bool isXwayland();
bool isXwaylandOf(std::string_view compositor);  ///< By the name that it gives itself.

/// Windows neither know nor choose their place, and keep the size that they are first shown with.
bool isWayland();

/// Gives a window no frame, no focus and no task bar entry, and puts it above all others. On X11 it
/// bypasses the window manager, as none keeps a window above full-screen ones and on every
/// workspace.
void makeOverlay(QWidget* window);

/// Rounds a window's corners, in points, where no compositor can make them transparent.
void cutCorners(QWidget* window, double radius);

}  // namespace WindowSystem
