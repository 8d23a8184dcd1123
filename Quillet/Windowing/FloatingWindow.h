#pragma once

#include <QAbstractNativeEventFilter>
#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <optional>
#include <set>

#include "Drawing/Geometry.h"

/// A small window above all others, full-screen ones included, on every workspace, in no task bar
/// and never with the focus. It is dragged by its background. Coordinates are points with the
/// origin at the bottom-left of the primary screen, y upwards.
class FloatingWindow : public QWidget, private QAbstractNativeEventFilter {
public:
    /// The content view keeps its owner. Where the desktop shows no transparency, the corners are
    /// cut off instead.
    explicit FloatingWindow(QWidget* content, double cornerRadius = 0);
    ~FloatingWindow() override;

    std::function<void()> onMoved;                      ///< At the end of a drag.
    std::function<void(QPoint globalPosition)> onMenu;  ///< A right click.
    std::function<void()> onScreensChanged;             ///< The place should be checked again.

    /// Bottom-left corner. A place set while the user drags is ignored.
    Point origin() const;
    void setOrigin(Point origin);
    void resizeKeepingOrigin(QSize size);

    /// Bars that can't be put under what `whom` shows at `area` stay away until it calls with an
    /// empty one.
    static void makeWay(const void* whom, const QRect& area);

    /// Whether a bar has the focus only because it came up just now.
    static bool hasTakenFocus();

    void setVisible(bool visible) override;

    /// Of the bar itself, in Qt's coordinates. The window may be larger: while it is dragged, and
    /// where a compositor has a minimum size.
    QRect frame() const;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Drag {
        QPointF grip;  ///< From the bar's top left corner.
        QRect frame;
        bool moved = false;
        /// The window grows over all screens and the bar moves within: under Xwayland some
        /// compositors lose the pointer when the window itself moves beneath it.
        bool within = false;
    };

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
    void setGivesWay(const void* whom, bool givesWay);
    void setFrame(const QRect& frame);
    void endDrag();

    QWidget* const content;
    const double cornerRadius;
    std::optional<Drag> drag;
    QTimer placing;  ///< Anew, after the window grew.
    QElapsedTimer shown;
    bool wanted = false;
    std::set<const void*> givingWayTo;
};
