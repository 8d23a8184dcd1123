#pragma once

#include <QImage>
#include <QRect>
#include <QString>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Windowing/MenuItem.h"

/// What a status item shows. A host gets one of the shapes, and only that one is drawn.
struct StatusContent {
    using Picture = std::function<QImage(double scale)>;  ///< `scale` in pixels per point.

    Picture wide;         ///< 22 points high.
    Picture square;       ///< 22 by 22 points.
    std::string toolTip;  ///< Lines of plain text.
    MenuItems menu;

    /// The tool tip as escaped HTML. Lines that are too long for any screen are cut.
    QString markup() const;
    /// The same in a tag, so that Qt never takes it for plain text.
    QString richText() const;

    /// At 1 and 2 pixels per point, from which trays choose.
    static std::vector<QImage> sizes(const Picture& picture) { return {picture(1), picture(2)}; }
};

/// Where a clicked item stands, in Qt's coordinates, as far as its host tells.
struct ItemPlace {
    std::optional<QRect> geometry;
    std::optional<QPoint> reported;  ///< By the host, which may count from elsewhere.
    bool mayHaveClosed = true;       ///< The click may be the one that closed the popover.
};

/// One way to stand on the desktop, for as long as its host lives.
class StatusForm {
public:
    using Activate = std::function<void(const ItemPlace&)>;

    virtual ~StatusForm() = default;
    virtual void setContent(const StatusContent& content) = 0;
    virtual std::optional<QRect> geometry() const = 0;
};
