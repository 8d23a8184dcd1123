#include "Windowing/FloatingWindow.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QWindow>

#include "Windowing/Screens.h"
#include "Windowing/WindowSystem.h"
#include "Windowing/X11.h"

namespace {

constexpr auto bare = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                      Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint;

constexpr int pictureDelay =
    50;  // milliseconds until a compositor has the picture of a window that grew
constexpr int focusDelay =
    500;  // milliseconds until a compositor has given the focus to a window that it shows

/// Unmanaged where that exists: no window manager keeps a managed window above full-screen ones, on
/// every workspace and away from the focus. A Wayland compositor would not show an unmanaged one at
/// all.
Qt::WindowFlags windowForm() {
    return WindowSystem::isX11() ? bare | Qt::BypassWindowManagerHint : bare;
}

/// What the user has open stays above.
void raisePopup() {
    if (QWidget* const popup = QApplication::activePopupWidget()) popup->raise();
}

}  // namespace

FloatingWindow::FloatingWindow(QWidget* shown, double radius)
    : QWidget(nullptr, windowForm()), content(shown), cornerRadius(radius) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    content->setParent(this);
    content->move(0, 0);
    content->show();
    setFrame(content->geometry());
    placing.setSingleShot(true);
    placing.setInterval(pictureDelay);
    placing.callOnTimeout([this] {
        setGeometry(Screens::desktop());
        setFrame(frame());
    });
    if (WindowSystem::isX11()) qApp->installNativeEventFilter(this);
    Screens::onChange(this, [this] {
        if (onScreensChanged) onScreensChanged();
    });
}

FloatingWindow::~FloatingWindow() {
    content->setParent(nullptr);
}

bool FloatingWindow::hasTakenFocus() {
    const auto* const bar = dynamic_cast<FloatingWindow*>(QApplication::activeWindow());
    return bar && bar->shown.isValid() && bar->shown.elapsed() < focusDelay;
}

QRect FloatingWindow::frame() const {
    if (drag) return drag->frame;
    return content->geometry().translated(pos());
}

void FloatingWindow::setFrame(const QRect& frame) {
    const bool isShownAnew =
        WindowSystem::isWayland() && isVisible() && frame.size() != this->frame().size();
    if (isShownAnew) QWidget::setVisible(false);
    if (WindowSystem::isWayland())
        setFixedSize(frame.size());  // a tiling compositor leaves such a window alone
    if (drag) drag->frame = frame;
    if (!drag || !drag->within) setGeometry(frame);
    content->setGeometry(frame.translated(-pos()));
    if (isShownAnew) QWidget::setVisible(true);
}

Point FloatingWindow::origin() const {
    const Rect rect = Screens::fromQt(frame());
    return {rect.x, rect.y};
}

void FloatingWindow::setOrigin(Point origin) {
    if (drag) return;
    const Rect rect = Screens::fromQt(frame());
    setFrame(Screens::toQt({origin.x, origin.y, rect.width, rect.height}));
}

void FloatingWindow::resizeKeepingOrigin(QSize size) {
    QRect resized(QPoint(), size);
    resized.moveBottomLeft(frame().bottomLeft());
    setFrame(resized);
}

void FloatingWindow::setVisible(bool visible) {
    wanted = visible;
    QWidget::setVisible(wanted && givingWayTo.empty());
    raisePopup();
}

void FloatingWindow::makeWay(const void* whom, const QRect& area) {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        auto* const bar = dynamic_cast<FloatingWindow*>(window);
        if (bar) bar->setGivesWay(whom, bar->frame().intersects(area));
    }
}

void FloatingWindow::setGivesWay(const void* whom, bool gives) {
    if (gives) {
        givingWayTo.insert(whom);
    } else {
        givingWayTo.erase(whom);
    }
    const bool shows = wanted && givingWayTo.empty();
    if (shows != isVisible()) QWidget::setVisible(shows);
}

void FloatingWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (WindowSystem::isWayland()) {
        windowHandle()
            ->startSystemMove();  // where windows don't know their place, the compositor moves them
        return;
    }
    const QRect before = frame();
    drag =
        Drag{event->globalPosition() - before.topLeft(), before, false, WindowSystem::isXwayland()};
    if (!drag->within) return;
    // A compositor takes a new place at once and a new size with the next picture: placed anew
    // before that, the small window would slip away from under the pointer.
    resize(Screens::desktop().size());
    placing.start();
}

void FloatingWindow::mouseMoveEvent(QMouseEvent* event) {
    if (!drag) return;
    const QRect before = frame();
    setFrame({(event->globalPosition() - drag->grip).toPoint(), before.size()});
    drag->moved |= frame() != before;
}

void FloatingWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) endDrag();
}

void FloatingWindow::endDrag() {
    if (!drag) return;
    const QRect dropped = frame();
    const bool moved = drag->moved;
    placing.stop();
    drag.reset();
    setFrame(dropped);
    if (moved && onMoved) onMoved();
}

void FloatingWindow::contextMenuEvent(QContextMenuEvent* event) {
    if (onMenu) onMenu(event->globalPos());
}

void FloatingWindow::showEvent(QShowEvent*) {
    shown.start();
}

void FloatingWindow::hideEvent(QHideEvent*) {
    endDrag();
}

void FloatingWindow::resizeEvent(QResizeEvent*) {
    WindowSystem::cutCorners(this, cornerRadius);
}

bool FloatingWindow::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
    if (!isVisible() || !X11::isRestacking(message)) return false;
    raise();
    raisePopup();
    return false;
}
