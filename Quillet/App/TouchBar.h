#pragma once

#include <QImage>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

class QWidget;

/// A button that shows only its image.
struct TouchBarButton {
    QImage image;
    std::function<void()> action;
};

/// One item of a Touch Bar: a button, or a view that its owner keeps.
struct TouchBarItem {
    std::string identifier;
    std::optional<TouchBarButton> button;
    QWidget* view = nullptr;
};

/// A bar whose items its owner makes on demand; for an identifier that the owner doesn't know there
/// is none.
struct TouchBar {
    std::vector<std::string> defaultItemIdentifiers;
    std::function<std::optional<TouchBarItem>(const std::string& identifier)> makeItem;
};

/// The system's private Touch Bar operations, by the names under which the system has them. No
/// machine that runs Linux has any.
struct TouchBarOperations {
    struct Arguments {
        TouchBarItem* item = nullptr;
        TouchBar* touchBar = nullptr;
        std::string identifier{};
        bool flag = false;
    };
    using Table = std::map<std::string, std::function<void(const Arguments&)>>;

    Table itemClass;  ///< Of the class of items.
    Table barClass;   ///< Of the class of bars.
    std::optional<Table>
        framework;  ///< Functions of the private framework; absent while it isn't loaded.

    /// What this machine offers.
    static TouchBarOperations& shared();
};
