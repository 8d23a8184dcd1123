#pragma once

#include <QImage>
#include <QRect>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Windowing/MenuItem.h"

/// What a status item shows. A host gets one of the shapes, never both, and only that one is drawn.
struct StatusContent {
    using Picture = std::function<QImage(double scale)>;  ///< At so many pixels per point.

    Picture wide;         ///< 22 points high.
    Picture square;       ///< 22 by 22 points.
    std::string toolTip;  ///< Lines of plain text.
    MenuItems menu;

    /// The tool tip's lines as markup that shows each as it stands, whatever a file has put in, and
    /// not all of one that fits no screen.
    QString markup() const;
    QString toolkitMarkup()
        const;  ///< The same so that the toolkit takes it for markup in every case.

    /// In the sizes that trays choose from: at 1 and 2 pixels per point.
    static std::vector<QImage> sizes(const Picture& picture) { return {picture(1), picture(2)}; }
};

/// Where a clicked item stands, in Qt's coordinates, as far as its host tells.
struct ItemPlace {
    std::optional<QRect> geometry;
    std::optional<QPoint>
        reported;  ///< From a host that may count from elsewhere than the screen's corner.
};

/// The application's place in the desktop's tray, in the form that the desktop has a host for: a
/// StatusNotifier item, Qt's tray icon where hosts only embed windows, or a small window of its own
/// at the screen's top right while no host takes it. Hosts may come late, restart and go; the item
/// follows.
class StatusItem {
public:
    using Activate = std::function<void(const ItemPlace&)>;

    explicit StatusItem(Activate onActivate);
    ~StatusItem();

    void setContent(StatusContent content);

    /// Called when the item comes to stand somewhere else, or nowhere.
    void setOnPlaceChange(std::function<void()> onPlaceChange);

    /// Where the item stands on the screen, in device-independent pixels; absent when the host
    /// doesn't tell.
    std::optional<QRect> geometry() const;

    /// One way to stand on the desktop. It lives as long as its host does.
    class Form {
    public:
        virtual ~Form() = default;
        virtual void setContent(const StatusContent& content) = 0;
        virtual std::optional<QRect> geometry() const = 0;
    };

private:
    struct State;
    std::unique_ptr<State> state;
};
