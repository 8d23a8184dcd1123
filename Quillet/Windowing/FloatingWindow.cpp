#include "Windowing/FloatingWindow.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QWindow>
#include <array>

#include "Windowing/Screens.h"
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
    return X11::connection() ? bare | Qt::BypassWindowManagerHint : bare;
}

/// Whether the window manager has put another window on top. Without a timer: it tells in the root
/// window's properties.
bool isRestacking(const xcb_generic_event_t& event) {
    static const std::array restacked{X11::atom("_NET_ACTIVE_WINDOW"),
                                      X11::atom("_NET_CLIENT_LIST_STACKING")};
    if ((event.response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return false;
    const xcb_atom_t changed = reinterpret_cast<const xcb_property_notify_event_t&>(event).atom;
    return changed == restacked[0] || changed == restacked[1];
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
    if (X11::connection()) qApp->installNativeEventFilter(this);
    Screens::onChange(this, [this] {
        if (onScreensChanged) onScreensChanged();
    });
}

FloatingWindow::~FloatingWindow() {
    if (content) content->setParent(nullptr);
}

bool FloatingWindow::isPlacedByCompositor() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

bool FloatingWindow::hasTakenFocus() {
    const auto* const bar = dynamic_cast<FloatingWindow*>(QApplication::activeWindow());
    return bar && bar->shown.isValid() && bar->shown.elapsed() < focusDelay;
}

QRect FloatingWindow::frame() const {
    if (drag) return drag->frame;
    return content ? content->geometry().translated(pos()) : geometry();
}

void FloatingWindow::setFrame(const QRect& frame) {
    const bool isShownAnew =
        isPlacedByCompositor() && isVisible() && frame.size() != this->frame().size();
    if (isShownAnew) QWidget::setVisible(false);
    if (isPlacedByCompositor())
        setFixedSize(frame.size());  // a tiling compositor leaves such a window alone
    if (drag) drag->frame = frame;
    if (!drag || !drag->within) setGeometry(frame);
    if (content) content->setGeometry(frame.translated(-pos()));
    if (isShownAnew) QWidget::setVisible(true);
}

Point FloatingWindow::origin() const {
    const Rect rect = Screens::fromToolkit(frame());
    return {rect.x, rect.y};
}

void FloatingWindow::setOrigin(Point origin) {
    if (drag) return;
    const Rect rect = Screens::fromToolkit(frame());
    setFrame(Screens::toToolkit({origin.x, origin.y, rect.width, rect.height}));
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
    if (isPlacedByCompositor()) {
        windowHandle()
            ->startSystemMove();  // where windows don't know their place, the compositor moves them
        return;
    }
    const QRect before = frame();
    drag = Drag{event->globalPosition() - before.topLeft(), before, false, Screens::areXwayland()};
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
    X11::cutCorners(this, cornerRadius);
}

bool FloatingWindow::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
    if (!isVisible() || !isRestacking(*static_cast<xcb_generic_event_t*>(message))) return false;
    raise();
    raisePopup();
    return false;
}
