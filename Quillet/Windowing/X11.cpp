#include "Windowing/X11.h"

#include <QGuiApplication>
#include <QPainterPath>
#include <QWidget>
#include <cstring>
#include <iterator>

#include "Windowing/Screens.h"

namespace {

constexpr uint32_t longest = 16384;  // numbers in a property

xcb_window_t root() {
    return xcb_setup_roots_iterator(xcb_get_setup(X11::connection())).data->root;
}

}  // namespace

xcb_connection_t* X11::connection() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t X11::atom(const char* name) {
    const auto request =
        xcb_intern_atom(connection(), 0, static_cast<uint16_t>(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection(), request, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

bool X11::isOwned(const char* selection) {
    const auto request = xcb_get_selection_owner(connection(), atom(selection));
    const Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection(), request, nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

/// All are asked for before the first is waited for.
std::vector<std::vector<uint32_t>> X11::properties(const std::vector<xcb_window_t>& windows,
                                                   xcb_atom_t name) {
    std::vector<xcb_get_property_cookie_t> requests;
    requests.reserve(windows.size());
    for (const xcb_window_t window : windows)
        requests.push_back(
            xcb_get_property(connection(), 0, window, name, XCB_ATOM_ANY, 0, longest));
    std::vector<std::vector<uint32_t>> values;
    for (const auto request : requests) {
        const Reply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(connection(), request, nullptr));
        auto& value = values.emplace_back();
        if (!reply || reply->format != 32) continue;
        const auto* const first = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
        value.assign(first, first + reply->value_len);
    }
    return values;
}

std::vector<xcb_window_t> X11::managedWindows() {
    static const xcb_atom_t list = atom("_NET_CLIENT_LIST");
    return properties({root()}, list).front();
}

std::string X11::windowManager() {
    const auto speaker = properties({root()}, atom("_NET_SUPPORTING_WM_CHECK")).front();
    if (speaker.empty()) return {};
    const auto request = xcb_get_property(connection(), 0, speaker.front(), atom("_NET_WM_NAME"),
                                          XCB_ATOM_ANY, 0, longest);
    const Reply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection(), request, nullptr));
    if (!reply || reply->format != 8) return {};
    const auto* const name = static_cast<const char*>(xcb_get_property_value(reply.get()));
    return {name, name + reply->value_len};
}

/// Every workspace has one; they are alike but for panels that are on some workspaces alone.
QRect X11::workArea() {
    const auto numbers = properties({root()}, atom("_NET_WORKAREA")).front();
    if (numbers.size() < 4) return {};
    const auto at = [&numbers](std::size_t index) { return static_cast<int>(numbers[index]); };
    return {at(0), at(1), at(2), at(3)};
}

void X11::leaveTaskBar(QWidget* window) {
    const xcb_atom_t states[] = {atom("_NET_WM_STATE_SKIP_TASKBAR"),
                                 atom("_NET_WM_STATE_SKIP_PAGER")};
    xcb_change_property(connection(), XCB_PROP_MODE_APPEND,
                        static_cast<xcb_window_t>(window->winId()), atom("_NET_WM_STATE"),
                        XCB_ATOM_ATOM, 32, std::size(states), states);
}

void X11::cutCorners(QWidget* window, double radius) {
    window->clearMask();
    if (!connection() || Screens::areXwayland() || isOwned("_NET_WM_CM_S0")) return;
    QPainterPath path;
    path.addRoundedRect(window->rect(), radius, radius);
    window->setMask(path.toFillPolygon().toPolygon());
}
