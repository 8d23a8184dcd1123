#pragma once

#include <QImage>
#include <QWidget>
#include <optional>
#include <vector>

#include "Drawing/Canvas.h"
#include "Model/UsageSnapshot.h"

/// A horizontal strip with one segment per provider. It paints no background: the host supplies a
/// dark one.
class StripView : public QWidget {
public:
    struct Entry {
        Provider provider;
        std::optional<QImage> icon;             ///< 22 by 22 points.
        std::optional<UsageSnapshot> snapshot;  ///< Absent until the provider has reported.
    };

    static constexpr double intrinsicHeight = 30;  ///< Points.

    using QWidget::QWidget;

    /// Shows `entries` from now on, in their order. The strip then asks for another width.
    void update(std::vector<Entry> entries);
    using QWidget::update;

    double measuredWidth() const { return wantedWidth; }  ///< Points that the entries need.
    QSize sizeHint() const override;

    /// The strip in an area `areaHeight` points high.
    void draw(Canvas& canvas, double areaHeight) const;

protected:
    void paintEvent(QPaintEvent*) override;

private:
    std::vector<Entry> entries;
    double wantedWidth = 260;  // until the first update
};
