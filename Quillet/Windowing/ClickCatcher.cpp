#include "Windowing/ClickCatcher.h"

#include <QEvent>

#include "Windowing/Screens.h"

namespace {

constexpr int pointerDelay =
    60;  // milliseconds from the pointer's coming to its place, which is told later
constexpr int mostPatience = 500;  // milliseconds for a pointer that doesn't come

}  // namespace

ClickCatcher::ClickCatcher(QWidget* attended)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus |
                           Qt::BypassWindowManagerHint | Qt::NoDropShadowWindowHint),
      popup(attended) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    popup->installEventFilter(this);
    covered.setSingleShot(true);
    covered.callOnTimeout([this] {
        const QPoint pointer = QCursor::pos();
        onCovered(pointer == knownPointer ? std::nullopt : std::optional(pointer));
        if (!popup->isVisible()) hide();
    });
}

void ClickCatcher::cover(const std::function<void(std::optional<QPoint>)>& then) {
    onCovered = then;
    knownPointer = QCursor::pos();
    covered.start(mostPatience);
    clearMask();
    setGeometry(Screens::desktop());
    show();
}

void ClickCatcher::surround(const QRect& window) {
    covered.stop();
    setGeometry(Screens::desktop());
    setMask(QRegion(rect()) - window.translated(-pos()));
    show();
}

/// Some compositors stack windows in the order of their first pictures, so a popup that came
/// together with its cover could end up below it. The pointer comes to what is on the screen.
void ClickCatcher::enterEvent(QEnterEvent*) {
    if (covered.isActive()) covered.start(pointerDelay);
}

bool ClickCatcher::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Hide) hide();
    return false;
}

void ClickCatcher::mousePressEvent(QMouseEvent*) {
    popup->close();
}
