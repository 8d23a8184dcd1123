#include "App/GUIApplication.h"

#include <QPlatformSurfaceEvent>
#include <QWindow>
#include <chrono>

#include "Desktop/X11.h"
#include "Platform/ResidentSet.h"

namespace {

constexpr std::chrono::seconds restsAfter(60);

/// The toolkit closes every popup when it hears that the program has lost the focus, of which it
/// hears late: a click soon after another popup closed would seem to do nothing. On X11 a popup has
/// the pointer and the keyboard to itself and needs no such help.
bool isStale(const QEvent& event) {
    return event.type() == QEvent::ApplicationDeactivate && QApplication::activePopupWidget() &&
           X11::connection();
}

/// Clicks that other programs report, a status item's host for one, are seen by the windows that
/// come and go.
bool isUse(const QEvent& event, const QObject& receiver) {
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::KeyPress:
        return true;
    case QEvent::Show:
    case QEvent::Hide:
        return receiver.isWindowType();
    default:
        return false;
    }
}

/// The toolkit follows the focus from widget to widget in the window that has it. When such a
/// window is closed it doesn't stop, and would follow it once more, with memory that is never
/// freed, each time that the window comes back.
void stopFollowingFocus(const QEvent& event, QObject& receiver) {
    if (event.type() != QEvent::PlatformSurface) return;
    const auto type = static_cast<const QPlatformSurfaceEvent&>(event).surfaceEventType();
    auto* const window = qobject_cast<QWindow*>(&receiver);
    if (type != QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed || !window) return;
    QObject::disconnect(window, &QWindow::focusObjectChanged, qApp, nullptr);
}

}  // namespace

GUIApplication::GUIApplication(int& count, char** arguments) : QApplication(count, arguments) {
    untilRest.setSingleShot(true);
    untilRest.callOnTimeout([this] { trimming = std::jthread(ResidentSet::trim); });
    untilRest.start(restsAfter);
}

bool GUIApplication::notify(QObject* receiver, QEvent* event) {
    if (isStale(*event)) return true;
    if (isUse(*event, *receiver)) untilRest.start(restsAfter);
    stopFollowingFocus(*event, *receiver);
    return QApplication::notify(receiver, event);
}
