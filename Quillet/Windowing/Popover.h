#pragma once

#include <QElapsedTimer>
#include <QRect>
#include <QWidget>
#include <memory>
#include <optional>

class ClickCatcher;

/// A borderless window at the status item, of its view's size. A click outside, Escape or a click
/// on the item closes it.
class Popover : public QWidget {
public:
    explicit Popover(QWidget* view);  ///< The view must outlive it.
    ~Popover() override;

    bool isShown() const { return isVisible(); }

    /// Below the item (Qt's coordinates), or above it if there is no room. Without an item: at the
    /// pointer or the reported click if that is near a screen's edge, else at the top right.
    void show(std::optional<QRect> item, std::optional<QPoint> click = std::nullopt);
    void close();

    /// Whether a click that reaches the item now is probably the one that closed it.
    bool justClosed() const;

    /// Where a popover of `size` stands at `anchor`, within `area`.
    static QRect place(const QRect& anchor, QSize size, const QRect& area);

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    enum class Form {
        popup,        ///< Grabs the pointer and gets every click.
        window,       ///< Closes when the window manager takes the focus from it.
        caughtPopup,  ///< A popup above a ClickCatcher.
    };

    void open();
    static Form bestForm();
    void setForm(Form best);
    QRect locate(std::optional<QPoint> click, std::optional<QPoint> pointer);
    void catchClicks();
    void follow();
    void hideBars(bool hide) const;

    QWidget* const view;
    const std::unique_ptr<ClickCatcher> catcher;
    std::optional<Form> form;
    QRect anchor;
    std::optional<QPoint> lastClick;  ///< The last for which the pointer's place was known.
    QPoint lastPointer;
    QElapsedTimer sinceDismissed;  ///< Valid once the user dismissed it by turning elsewhere.
};
