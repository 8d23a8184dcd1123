#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

class QMenu;

/// One row of the context menu, which Qt shows or a tray host draws.
struct MenuItem {
    std::string title;                  ///< Empty: a separator.
    std::optional<char> keyEquivalent;  ///< With the menu's modifier, Control.
    std::optional<bool> checked;        ///< Absent: the row has no check mark.
    std::function<void()> action;       ///< None: an inactive heading.

    bool isSeparator() const { return title.empty(); }

    /// Whether both look alike; actions can't be compared.
    bool looksLike(const MenuItem& other) const {
        return title == other.title && keyEquivalent == other.keyEquivalent &&
               checked == other.checked && !action == !other.action;
    }
};

using MenuItems = std::vector<MenuItem>;

/// Replaces the menu's rows. A chosen row's action runs from the event loop, so that it may destroy
/// the menu.
void fillMenu(QMenu& menu, const MenuItems& items);
