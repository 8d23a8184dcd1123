#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <functional>

/// A transparent cover of all screens beneath a popup. Under Xwayland a popup doesn't hear of clicks on other
/// programs' windows, and would stay open; the cover hears of them.
class ClickCatcher : public QWidget {
public:
    explicit ClickCatcher(QWidget* popup);

    /// Calls back when it covers the screens, for the popup to be shown, with where the pointer is: under Xwayland
    /// only a window beneath it learns that. Stays as long as the popup, or not at all if that isn't shown.
    void cover(const std::function<void(QPoint pointer)>& then);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    const QPointer<QWidget> popup;
    std::function<void(QPoint)> onCovered;
    QTimer covered;
};
