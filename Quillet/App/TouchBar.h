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

/// One item of a Touch Bar: a button or a view, which it does not own.
struct TouchBarItem {
    std::string identifier;
    std::optional<TouchBarButton> button;
    QWidget* view = nullptr;
};

/// A bar whose items are made on demand; absent for an unknown identifier.
struct TouchBar {
    std::vector<std::string> defaultItemIdentifiers;
    std::function<std::optional<TouchBarItem>(const std::string& identifier)> makeItem;
};

/// The system's private Touch Bar operations by name. Linux has none.
struct TouchBarOperations {
    struct Arguments {
        TouchBarItem* item = nullptr;
        TouchBar* touchBar = nullptr;
        std::string identifier{};
        bool flag = false;
    };
    using Table = std::map<std::string, std::function<void(const Arguments&)>>;

    Table itemClass;
    Table barClass;
    std::optional<Table> framework;  ///< Absent while it isn't loaded.

    static TouchBarOperations& shared() {  ///< What this machine offers.
        static TouchBarOperations operations;
        return operations;
    }
};
