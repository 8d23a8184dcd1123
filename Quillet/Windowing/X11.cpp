#include "Windowing/X11.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QWidget>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>

namespace {

constexpr uint32_t maxLength = 16384;  // of a property, in units of 4 bytes

template <typename T>
using Reply = std::unique_ptr<T, decltype([](void* reply) { std::free(reply); })>;
using Property = Reply<xcb_get_property_reply_t>;

xcb_connection_t* connection() {
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

xcb_window_t root() {
    return xcb_setup_roots_iterator(xcb_get_setup(connection())).data->root;
}

xcb_atom_t atom(const char* name) {
    const auto length = static_cast<uint16_t>(std::strlen(name));
    const auto request = xcb_intern_atom(connection(), 0, length, name);
    const Reply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection(), request, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

int typeOf(const void* event) {
    return static_cast<const xcb_generic_event_t*>(event)->response_type & 0x7f;
}

xcb_get_property_cookie_t ask(xcb_window_t window, xcb_atom_t name) {
    return xcb_get_property(connection(), 0, window, name, XCB_ATOM_ANY, 0, maxLength);
}

Property answer(xcb_get_property_cookie_t request) {
    return Property(xcb_get_property_reply(connection(), request, nullptr));
}

/// Empty where the property is missing or no list of numbers.
std::vector<uint32_t> numbers(const Property& property) {
    if (!property || property->format != 32) return {};
    const auto* const first = static_cast<const uint32_t*>(xcb_get_property_value(property.get()));
    return {first, first + property->value_len};
}

std::vector<uint32_t> rootNumbers(const char* name) {
    return numbers(answer(ask(root(), atom(name))));
}

}  // namespace

bool X11::isOwned(const char* selection) {
    const auto request = xcb_get_selection_owner(connection(), atom(selection));
    const Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection(), request, nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

std::string X11::windowManager() {
    const auto window = rootNumbers("_NET_SUPPORTING_WM_CHECK");
    if (window.empty()) return {};
    const Property property = answer(ask(window.front(), atom("_NET_WM_NAME")));
    if (!property || property->format != 8) return {};
    const auto* const name = static_cast<const char*>(xcb_get_property_value(property.get()));
    return {name, name + property->value_len};
}

/// Each workspace has one. They differ only where a panel is on some workspaces alone.
QRect X11::workArea() {
    const auto area = rootNumbers("_NET_WORKAREA");
    if (area.size() < 4) return {};
    return {int(area[0]), int(area[1]), int(area[2]), int(area[3])};
}

std::vector<std::array<int, 12>> X11::struts() {
    static const xcb_atom_t name = atom("_NET_WM_STRUT_PARTIAL");
    std::vector<xcb_get_property_cookie_t> requests;  // all of them before the first answer
    for (const xcb_window_t window : rootNumbers("_NET_CLIENT_LIST"))
        requests.push_back(ask(window, name));
    std::vector<std::array<int, 12>> struts;
    for (const auto request : requests) {
        const auto strut = numbers(answer(request));
        if (strut.size() >= 12) std::copy_n(strut.begin(), 12, struts.emplace_back().begin());
    }
    return struts;
}

void X11::leaveTaskBar(QWidget* window) {
    const xcb_atom_t states[] = {atom("_NET_WM_STATE_SKIP_TASKBAR"),
                                 atom("_NET_WM_STATE_SKIP_PAGER")};
    xcb_change_property(connection(), XCB_PROP_MODE_APPEND,
                        static_cast<xcb_window_t>(window->winId()), atom("_NET_WM_STATE"),
                        XCB_ATOM_ATOM, 32, std::size(states), states);
}

bool X11::isRestacking(const void* event) {
    static const xcb_atom_t restacked[] = {atom("_NET_ACTIVE_WINDOW"),
                                           atom("_NET_CLIENT_LIST_STACKING")};
    const auto* const change = static_cast<const xcb_property_notify_event_t*>(event);
    return typeOf(event) == XCB_PROPERTY_NOTIFY &&
           (change->atom == restacked[0] || change->atom == restacked[1]);
}

/// A tray that embeds windows announces itself by a client message, and goes with its window.
bool X11::isTrayChange(const void* event) {
    return typeOf(event) == XCB_CLIENT_MESSAGE || typeOf(event) == XCB_DESTROY_NOTIFY;
}
