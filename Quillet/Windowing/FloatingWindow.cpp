#include "Windowing/FloatingWindow.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QWindow>

#include "Windowing/Screens.h"
#include "Windowing/WindowSystem.h"
#include "Windowing/X11.h"

namespace {

constexpr int pictureDelay = 50;  // milliseconds for a compositor to get a larger picture
constexpr int focusDelay = 500;   // milliseconds for a compositor to move the focus

void raiseOpenPopup() {
    if (QWidget* const popup = QApplication::activePopupWidget()) popup->raise();
}

}  // namespace

FloatingWindow::FloatingWindow(QWidget* shown, double radius)
    : content(shown), cornerRadius(radius) {
    WindowSystem::makeOverlay(this);
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
    return bar && bar->sinceShown.isValid() && bar->sinceShown.elapsed() < focusDelay;
}

QRect FloatingWindow::frame() const {
    if (drag) return drag->frame;
    return content->geometry().translated(pos());
}

void FloatingWindow::setFrame(const QRect& frame) {
    const bool isShownAnew =  // on Wayland a window keeps the size that it is first shown with
        WindowSystem::isWayland() && isVisible() && frame.size() != this->frame().size();
    if (isShownAnew) QWidget::setVisible(false);
    if (WindowSystem::isWayland()) setFixedSize(frame.size());  // keeps it from being tiled
    if (drag) drag->frame = frame;
    if (!drag || !drag->isInside) setGeometry(frame);
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
    isWanted = visible;
    QWidget::setVisible(isWanted && coveredOwners.empty());
    raiseOpenPopup();
}

void FloatingWindow::hideBarsAt(const void* owner, const QRect& area) {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        auto* const bar = dynamic_cast<FloatingWindow*>(window);
        if (bar) bar->setCovers(owner, bar->frame().intersects(area));
    }
}

void FloatingWindow::setCovers(const void* owner, bool covers) {
    if (covers) {
        coveredOwners.insert(owner);
    } else {
        coveredOwners.erase(owner);
    }
    const bool shows = isWanted && coveredOwners.empty();
    if (shows != isVisible()) QWidget::setVisible(shows);
}

void FloatingWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (WindowSystem::isWayland()) return void(windowHandle()->startSystemMove());
    const QRect before = frame();
    drag =
        Drag{event->globalPosition() - before.topLeft(), before, false, WindowSystem::isXwayland()};
    if (!drag->isInside) return;
    // A compositor takes a new place at once, but a new size only with the next picture. Placed
    // before that, the small window would leave the pointer.
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
    sinceShown.start();
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
    raiseOpenPopup();
    return false;
}
