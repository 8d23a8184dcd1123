#include "Tray.h"

#include <poll.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "Measure.h"
#include "Tests/Support/TemporaryHome.h"

namespace {

using Time = std::chrono::steady_clock;
constexpr auto timeout = std::chrono::seconds(10);

template <typename Reply>
std::unique_ptr<Reply, void (*)(void*)> owned(Reply* reply) {
    return {reply, std::free};
}

/// Null if none comes until then.
std::unique_ptr<xcb_generic_event_t, void (*)(void*)> nextEvent(xcb_connection_t* connection,
                                                                Time::time_point until) {
    for (;;) {
        if (auto* const event = xcb_poll_for_event(connection)) return owned(event);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Time::now()).count();
        pollfd readable{xcb_get_file_descriptor(connection), POLLIN, 0};
        if (left <= 0 || poll(&readable, 1, static_cast<int>(left)) < 0)
            return owned<xcb_generic_event_t>(nullptr);
    }
}

std::string runtimeDirectory() {
    std::string directory = TemporaryHome::beside("runtime");
    std::filesystem::create_directories(directory);
    std::filesystem::permissions(directory, std::filesystem::perms::owner_all);
    return directory;
}

std::vector<std::string> joined(std::vector<std::string> first,
                                const std::vector<std::string>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

void select(xcb_connection_t* connection, xcb_window_t window, std::uint32_t events) {
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &events);
    xcb_flush(connection);
}

}  // namespace

Tray::Tray(const std::vector<std::string>& more)
    : server({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp"}, {}),
      bus({"dbus-daemon", "--session", "--nofork", "--print-address=1"}, {}),
      display(":" + server.firstLine()),
      variables(joined({"HOME=" + TemporaryHome::path(), "PATH=" + std::string(std::getenv("PATH")),
                        "LANG=C.UTF-8", "XDG_RUNTIME_DIR=" + runtimeDirectory(),
                        "DISPLAY=" + display, "DBUS_SESSION_BUS_ADDRESS=" + bus.firstLine()},
                       more)),
      host({"trayer"}, variables),
      connection(xcb_connect(display.c_str(), nullptr), xcb_disconnect) {
    const int error = xcb_connection_has_error(connection.get());
    Measure::requireSame("a display", error == 0 ? display : "none", display);
    const auto* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data;
    for (const auto end = Time::now() + timeout; !hasHost() && Time::now() < end;)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    select(connection.get(), screen->root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
}

bool Tray::hasHost() const {
    constexpr std::string_view name = "_NET_SYSTEM_TRAY_S0";
    auto* const server = connection.get();
    const auto atom = owned(xcb_intern_atom_reply(
        server, xcb_intern_atom(server, false, name.size(), name.data()), nullptr));
    if (!atom) return false;
    const auto owner = owned(xcb_get_selection_owner_reply(
        server, xcb_get_selection_owner(server, atom->atom), nullptr));
    return owner && owner->owner != XCB_NONE;
}

bool Tray::isShown(xcb_window_t window) const {
    auto* const server = connection.get();
    const auto is = owned(xcb_get_window_attributes_reply(
        server, xcb_get_window_attributes(server, window), nullptr));
    return is && is->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool Tray::awaitIcon() {
    // Only the tray gives windows a new parent, as there is no window manager.
    const auto end = Time::now() + timeout;
    xcb_window_t icon = XCB_NONE;
    while (const auto event = nextEvent(connection.get(), end)) {
        if ((event->response_type & 0x7f) == XCB_REPARENT_NOTIFY) {
            icon = reinterpret_cast<const xcb_reparent_notify_event_t*>(event.get())->window;
            select(connection.get(), icon, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        }
        if (icon != XCB_NONE && isShown(icon)) return true;
    }
    return false;
}
