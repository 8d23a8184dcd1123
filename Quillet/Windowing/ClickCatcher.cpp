#include "Windowing/ClickCatcher.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>

#include "Windowing/Screens.h"
#include "Windowing/WindowSystem.h"

namespace {

constexpr int pointerDelay = 60;     // milliseconds; the place comes after the Enter event
constexpr int pointerTimeout = 500;  // milliseconds

}  // namespace

ClickCatcher::ClickCatcher(QWidget* attended) : popup(attended) {
    WindowSystem::makeOverlay(this);
    setWindowFlag(Qt::WindowStaysOnTopHint, false);  // the popup stands above
    popup->installEventFilter(this);
    pointerTimer.setSingleShot(true);
    pointerTimer.callOnTimeout([this] {
        const QPoint pointer = QCursor::pos();
        onCovered(pointer == knownPointer ? std::nullopt : std::optional(pointer));
        if (!popup->isVisible()) hide();
    });
}

void ClickCatcher::cover(const std::function<void(std::optional<QPoint>)>& then) {
    onCovered = then;
    knownPointer = QCursor::pos();
    pointerTimer.start(pointerTimeout);
    clearMask();
    setGeometry(Screens::desktop());
    show();
}

void ClickCatcher::surround(const QRect& window) {
    pointerTimer.stop();
    setGeometry(Screens::desktop());
    setMask(QRegion(rect()) - window.translated(-pos()));
    show();
}

/// Some compositors stack windows in the order of their first pictures, so the popup waits until
/// the cover is on the screen, where the pointer enters it.
void ClickCatcher::enterEvent(QEnterEvent*) {
    if (pointerTimer.isActive()) pointerTimer.start(pointerDelay);
}

bool ClickCatcher::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Hide) hide();
    return false;
}

void ClickCatcher::mousePressEvent(QMouseEvent* event) {
    popup->close();
    passOn(*event);
}

/// A cover may still be there, for a popup that isn't shown yet.
void ClickCatcher::passOn(const QMouseEvent& press) {
    const QPoint place = press.globalPosition().toPoint();
    QWidget* const window = QApplication::topLevelAt(place);
    const bool isCover = dynamic_cast<ClickCatcher*>(window);
    if (press.button() != Qt::RightButton || !window || isCover) return;
    QContextMenuEvent request(QContextMenuEvent::Mouse, window->mapFromGlobal(place), place);
    QApplication::sendEvent(window, &request);
}
