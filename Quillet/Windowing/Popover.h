#pragma once

#include <QElapsedTimer>
#include <QRect>
#include <QWidget>
#include <memory>
#include <optional>

class ClickCatcher;

/// A borderless window with one view that hangs at the status item and closes when the user turns
/// elsewhere: a click outside, Escape, or a click on the item. It takes the view's size, also while
/// it is open.
class Popover : public QWidget {
public:
    /// The view keeps its owner.
    explicit Popover(QWidget* view);
    ~Popover() override;

    bool isShown() const;

    /// Under the item (Qt's coordinates), or over it where there is no room below, wholly on the
    /// item's screen. An item whose place is unknown stands where the pointer is found at a
    /// screen's edge, else where the click was reported, if that is at an edge, else in the top
    /// right corner.
    void show(std::optional<QRect> item, std::optional<QPoint> click = std::nullopt);
    void close();

    /// Whether it closed so recently that the click that reaches the item now is the one that
    /// closed it.
    bool justClosed() const;

    /// Where a popover of `size` stands at `anchor`, within `area`.
    static QRect place(const QRect& anchor, QSize size, const QRect& area);

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    enum class Form {
        popup,        ///< Grabs the pointer, and so sees every click.
        window,       ///< One that the window manager gives the focus to, and takes it from.
        caughtPopup,  ///< A popup above a catcher of clicks.
    };

    void open();
    static Form bestForm();
    void setForm(Form best);
    QRect locate(std::optional<QPoint> click, std::optional<QPoint> pointer);
    void catchClicks();
    void follow();
    void setBarsGiveWay(bool giveWay) const;

    QWidget* const view;
    const std::unique_ptr<ClickCatcher> catcher;
    std::optional<Form> form;
    QRect anchor;
    std::optional<QPoint> lastClick;  ///< The newest with which the pointer was found, and where.
    QPoint lastPointer;
    QElapsedTimer dismissedFor;  ///< Valid once the user dismissed it by turning elsewhere.
};
