#include "Windowing/Popover.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include "Windowing/ClickCatcher.h"
#include "Windowing/FloatingWindow.h"
#include "Windowing/Screens.h"
#include "Windowing/WindowSystem.h"
#include "Windowing/X11.h"

namespace {

constexpr qint64 reclickTime = 400;  // milliseconds; the host reports the click that closed it
constexpr int edgeReach = 48;        // points; a tray is never farther from its screen's edge

bool isNearEdge(QPoint point) {
    const QRect area = Screens::available(point);
    return !area.adjusted(edgeReach, edgeReach, -edgeReach, -edgeReach).contains(point);
}

QRect topRight(const QRect& area) {
    return {area.topRight(), QSize(1, 0)};
}

}  // namespace

Popover::Popover(QWidget* shown) : view(shown), catcher(std::make_unique<ClickCatcher>(this)) {
    setFocusPolicy(Qt::ClickFocus);  // no button has the focus until the keyboard is used
    view->setParent(this);
    view->move(0, 0);
    view->show();
    view->installEventFilter(this);
    hide();
    Screens::onChange(this, [this] { follow(); });
}

Popover::~Popover() {
    view->setParent(nullptr);
}

bool Popover::justClosed() const {
    return sinceDismissed.isValid() && sinceDismissed.elapsed() < reclickTime;
}

QRect Popover::place(const QRect& anchor, QSize size, const QRect& area) {
    const int below = anchor.y() + anchor.height();
    const int above = anchor.y() - size.height();
    const bool fitsBelow = below + size.height() <= area.y() + area.height();
    const int y = fitsBelow || above < area.y() ? below : above;
    return Screens::clamped({QPoint(anchor.x() + (anchor.width() - size.width()) / 2, y), size},
                            area);
}

void Popover::show(std::optional<QRect> item, std::optional<QPoint> click) {
    if (!form) setForm(bestForm());
    if (WindowSystem::isXwayland() && (!item || form == Form::caughtPopup)) {
        catcher->cover([this, item, click](std::optional<QPoint> pointer) {
            anchor = item ? *item : locate(click, pointer);
            if (form != Form::caughtPopup) catcher->hide();
            open();
        });
        return;
    }
    const QPoint pointer = QCursor::pos();
    anchor = item.value_or(WindowSystem::isX11() ? QRect(pointer, QSize(1, 1))
                                                 : topRight(Screens::available(pointer)));
    open();
}

/// A host that counts from elsewhere reports the same numbers for the same place, so the pointer's
/// place at an earlier report like this one is still right.
QRect Popover::locate(std::optional<QPoint> click, std::optional<QPoint> pointer) {
    if (pointer && isNearEdge(*pointer)) {
        lastClick = click;
        lastPointer = *pointer;
        return {lastPointer, QSize(1, 1)};
    }
    if (click && click == lastClick) return {lastPointer, QSize(1, 1)};
    if (click && isNearEdge(*click)) return {*click, QSize(1, 1)};
    return topRight(Screens::available(pointer.value_or(QPoint())));
}

void Popover::open() {
    setFocus();
    follow();
    if (form == Form::window && WindowSystem::isX11())
        X11::leaveTaskBar(this);  // Plasma lists tool windows too
    QWidget::show();
    if (form == Form::window) activateWindow();
    catchClicks();
}

/// On GNOME a click on the wallpaper takes no focus from a window.
void Popover::catchClicks() {
    if (form == Form::window && WindowSystem::isXwaylandOf("GNOME Shell"))
        catcher->surround(geometry());
}

/// Under Xwayland only these compositors leave a managed window where it asks to be.
Popover::Form Popover::bestForm() {
    if (!WindowSystem::isXwayland()) return WindowSystem::isX11() ? Form::popup : Form::window;
    const bool keepsPlace =
        WindowSystem::isXwaylandOf("KWin") || WindowSystem::isXwaylandOf("GNOME Shell");
    return keepsPlace ? Form::window : Form::caughtPopup;
}

void Popover::setForm(Form best) {
    form = best;
    const Qt::WindowFlags type =
        best == Form::window ? Qt::Tool | Qt::WindowStaysOnTopHint : Qt::Popup;
    setWindowFlags(type | Qt::FramelessWindowHint);
}

void Popover::close() {
    hide();
    sinceDismissed.invalidate();
}

void Popover::follow() {
    const QRect place = Popover::place(anchor, view->size(), Screens::available(anchor.center()));
    setFixedSize(place.size());  // a tiling compositor leaves such a window alone
    move(place.topLeft());
    if (isVisible()) catchClicks();
    hideBars(isVisible());
}

/// A managed window stands below the bars, which are not managed.
void Popover::hideBars(bool hide) const {
    const bool isCovered = hide && form == Form::window && WindowSystem::isXwayland();
    FloatingWindow::hideBarsAt(this, isCovered ? geometry() : QRect());
}

bool Popover::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate && form == Form::window) {
        hide();
        // On native Wayland what is shown last gets the focus.
        if (FloatingWindow::hasTakenFocus())
            QMetaObject::invokeMethod(this, &QWidget::show, Qt::QueuedConnection);
    }
    if (event->type() == QEvent::Show) hideBars(true);
    return QWidget::event(event);
}

bool Popover::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && isVisible()) follow();
    if (event->type() == QEvent::Paint) hideBars(isVisible());  // a control may have brought a bar
    return QWidget::eventFilter(watched, event);
}

void Popover::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    close();
}

void Popover::mousePressEvent(QMouseEvent* event) {
    QWidget::mousePressEvent(event);  // closes a popup at a press outside
    if (!isVisible()) ClickCatcher::passOn(*event);
}

void Popover::hideEvent(QHideEvent*) {
    sinceDismissed.start();
    hideBars(false);
}
