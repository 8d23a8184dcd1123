#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <optional>

/// A transparent cover of all screens beneath a popup, which closes at a click on the cover. Under
/// Xwayland a popup gets no clicks on other programs' windows.
class ClickCatcher : public QWidget {
public:
    explicit ClickCatcher(QWidget* popup);

    /// Covers all screens, then calls back with the pointer's place, absent if it is unknown. X11
    /// tells the place only to a window under the pointer. Hides with the popup.
    void cover(const std::function<void(std::optional<QPoint> pointer)>& then);

    /// Covers all but the popup's window, where the compositor would stack that beneath the cover.
    void surround(const QRect& window);

    /// Asks our own window beneath a right press that closed a popup for its menu, if there is one.
    static void passOn(const QMouseEvent& press);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QWidget* const popup;
    std::function<void(std::optional<QPoint>)> onCovered;
    QPoint knownPointer;  ///< Before it covered anything, so perhaps an old one.
    QTimer pointerTimer;
};
