#pragma once

#include <xcb/xcb.h>

#include <memory>
#include <string>
#include <vector>

#include "Process.h"

/// A desktop of its own: a display, a session bus, and a tray that embeds icons.
class Tray {
public:
    /// `more` stands in the environment of the programs that run on it.
    explicit Tray(const std::vector<std::string>& more);

    /// Of the programs that run on it.
    const std::vector<std::string>& environment() const { return variables; }

    /// Waits until the tray has taken one more icon into its window and shows it there, or until 10
    /// seconds have passed without one.
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
