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

    bool isShown() const;

    /// Under the item (Qt's coordinates), or over it where there is no room below. The place of an
    /// unknown item is that of the pointer, else of the reported click, whichever is first near a
    /// screen's edge, else the top right corner.
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
    void setBarsGiveWay(bool giveWay) const;

    QWidget* const view;
    const std::unique_ptr<ClickCatcher> catcher;
    std::optional<Form> form;
    QRect anchor;
    std::optional<QPoint> lastClick;  ///< The newest with which the pointer was found, and where.
    QPoint lastPointer;
    QElapsedTimer dismissedFor;  ///< Valid once the user dismissed it by turning elsewhere.
};
