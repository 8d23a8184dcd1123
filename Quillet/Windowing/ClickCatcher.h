#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <optional>

/// A transparent cover of all screens beneath a popup. Under Xwayland a popup doesn't hear of
/// clicks on other programs' windows, and would stay open; the cover hears of them.
class ClickCatcher : public QWidget {
public:
    explicit ClickCatcher(QWidget* popup);

    /// Calls back when it covers the screens, for the popup to be shown, with where the pointer is.
    /// Under Xwayland only a window beneath the pointer learns that; the place is absent where none
    /// was told. Stays as long as the popup, or not at all if that isn't shown.
    void cover(const std::function<void(std::optional<QPoint> pointer)>& then);

    /// Covers all but a window, which the compositor stacks beneath its cover, for as long as that
    /// is open.
    void surround(const QRect& window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QWidget* const popup;
    std::function<void(std::optional<QPoint>)> onCovered;
    QPoint knownPointer;  ///< Before it covered anything: perhaps of long ago.
    QTimer covered;
};
