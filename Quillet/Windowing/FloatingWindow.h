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
    /// The content must outlive the window, which does not own it.
    explicit FloatingWindow(QWidget* content, double cornerRadius = 0);
    ~FloatingWindow() override;

    std::function<void()> onMoved;                      ///< At the end of a drag.
    std::function<void(QPoint globalPosition)> onMenu;  ///< A right click.
    std::function<void()> onScreensChanged;             ///< The place should be checked again.

    /// Bottom-left corner. A place set while the user drags is ignored.
    Point origin() const;
    void setOrigin(Point origin);
    void resizeKeepingOrigin(QSize size);

    /// Hides the bars that would cover what `owner` shows at `area`, until it calls with an empty
    /// one.
    static void hideBarsAt(const void* owner, const QRect& area);

    /// Whether a bar has the focus only because it was shown just now.
    static bool hasTakenFocus();

    void setVisible(bool visible) override;

    /// The bar in Qt's coordinates. The window is larger while it is dragged, or where a compositor
    /// has a minimum size.
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
        /// The window covers all screens and the bar moves inside it. Under Xwayland some
        /// compositors lose the pointer when the window itself moves.
        bool isInside = false;
    };

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
    void setCovers(const void* owner, bool covers);
    void setFrame(const QRect& frame);
    void endDrag();

    QWidget* const content;
    const double cornerRadius;
    std::optional<Drag> drag;
    QTimer placing;  ///< After the window grew.
    QElapsedTimer sinceShown;
    bool isWanted = false;
    std::set<const void*> coveredOwners;
};
