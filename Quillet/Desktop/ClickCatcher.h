#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>

/// A transparent cover of all screens beneath a popup. Under Xwayland a popup doesn't hear of clicks on other
/// programs' windows, and would stay open; the cover hears of them.
class ClickCatcher : public QWidget {
public:
    /// Stands beneath `popup` whenever that is shown, on the desktops that need it.
    explicit ClickCatcher(QWidget* popup);

    bool isNeeded;

    /// Calls back with where the pointer is: under Xwayland only a window beneath it learns that.
    void locatePointer(QObject* receiver, const std::function<void(QPoint)>& located);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void cover();

    const QPointer<QWidget> popup;
};
