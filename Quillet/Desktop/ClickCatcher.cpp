#include "Desktop/ClickCatcher.h"

#include <QEvent>
#include <QTimer>

#include "Desktop/Screens.h"

namespace {

constexpr int pointerDelay = 120;  // milliseconds until the compositor has told

}  // namespace

ClickCatcher::ClickCatcher(QWidget* attended)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus |
                           Qt::BypassWindowManagerHint | Qt::NoDropShadowWindowHint),
      isNeeded(Screens::areXwayland()),
      popup(attended) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    popup->installEventFilter(this);
}

void ClickCatcher::cover() {
    setGeometry(Screens::desktop());
    show();
}

void ClickCatcher::locatePointer(QObject* receiver, const std::function<void(QPoint)>& located) {
    cover();
    QTimer::singleShot(pointerDelay, receiver, [this, located] {
        hide();
        located(QCursor::pos());
    });
}

bool ClickCatcher::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Show && isNeeded) cover();  // comes before the popup is on the screen
    if (event->type() == QEvent::Hide) hide();
    return false;
}

void ClickCatcher::mousePressEvent(QMouseEvent*) {
    if (popup) popup->close();
}
