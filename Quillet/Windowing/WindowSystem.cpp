#include "Windowing/WindowSystem.h"

#include <QGuiApplication>
#include <QPainterPath>
#include <QWidget>

#include "Windowing/X11.h"

namespace {

bool isSet(const char* variable) {
    return !qEnvironmentVariableIsEmpty(variable);
}

}  // namespace

bool WindowSystem::choose() {
    if (isSet("QT_QPA_PLATFORM")) return true;
    if (isSet("WAYLAND_DISPLAY") && isSet("DISPLAY")) qputenv("QT_QPA_PLATFORM", "xcb;wayland");
    return isSet("WAYLAND_DISPLAY") || isSet("DISPLAY");
}

bool WindowSystem::isX11() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

bool WindowSystem::isXwayland() {
    return isX11() && qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

bool WindowSystem::isXwaylandOf(std::string_view compositor) {
    return isXwayland() && X11::windowManager() == compositor;
}

bool WindowSystem::isWayland() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

void WindowSystem::makeOverlay(QWidget* window) {
    window->setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint);
    window->setWindowFlag(Qt::BypassWindowManagerHint, isX11());  // Wayland would never show it
    window->setAttribute(Qt::WA_TranslucentBackground);
    window->setAttribute(Qt::WA_ShowWithoutActivating);
}

void WindowSystem::cutCorners(QWidget* window, double radius) {
    window->clearMask();
    if (!isX11() || isXwayland() || X11::isOwned("_NET_WM_CM_S0")) return;
    QPainterPath path;
    path.addRoundedRect(window->rect(), radius, radius);
    window->setMask(path.toFillPolygon().toPolygon());
}
