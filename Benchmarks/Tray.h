#pragma once

#include <xcb/xcb.h>

#include <memory>
#include <string>
#include <vector>

#include "Process.h"

/// A desktop of its own: a display, a session bus and a tray that embeds X windows.
class Tray {
public:
    /// `more` joins the environment of the programs that run on it.
    explicit Tray(const std::vector<std::string>& more);

    /// For the programs that run on it.
    const std::vector<std::string>& environment() const { return variables; }

    /// Waits until the tray has embedded and mapped one more icon; gives up after 10 seconds.
    bool awaitIcon();

private:
    bool hasHost() const;
    bool isShown(xcb_window_t window) const;

    const Process server;
    const Process bus;
    const std::string display;
    const std::vector<std::string> variables;
    const Process host;
    const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection;
};
