#include "Desktop/Popover.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTimer>
#include <algorithm>
#include <vector>

#include "Desktop/ClickCatcher.h"
#include "Desktop/FloatingWindow.h"
#include "Desktop/Screens.h"
#include "Desktop/X11.h"

namespace {

constexpr qint64 reclickTime = 400;   // milliseconds between the press that closes it and the tray host's report
constexpr qint64 settlingTime = 500;  // within which a compositor that places windows by itself has done so
constexpr int focusTime = 300;        // until the last word is heard of the focus of a window that went
constexpr int edgeReach = 48;         // a tray is never farther from its screen's edge

bool isNearEdge(QPoint point, const QRect& area) {
    return !area.adjusted(edgeReach, edgeReach, -edgeReach, -edgeReach).contains(point);
}

QRect topRight(const QRect& area) {
    return {area.topRight(), QSize(1, 0)};
}

/// The view's controls row by row, as they stand.
std::vector<QWidget*> inVisualOrder(const QWidget* view) {
    std::vector<QWidget*> controls;
    for (QWidget* const child : view->findChildren<QWidget*>())
        if (child->focusPolicy() & Qt::TabFocus) controls.push_back(child);
    std::ranges::sort(controls, {}, [](const QWidget* control) { return control->geometry().top(); });
    for (auto row = controls.begin(); row != controls.end();) {
        const int bottom = (*row)->geometry().bottom();
        const auto next =
            std::find_if(row, controls.end(), [bottom](const QWidget* c) { return c->geometry().top() > bottom; });
        std::sort(row, next, [](const QWidget* a, const QWidget* b) { return a->x() < b->x(); });
        row = next;
    }
    return controls;
}

}  // namespace

Popover::Popover(QWidget* shown) : view(shown), catcher(std::make_unique<ClickCatcher>(this)) {
    setFocusPolicy(Qt::ClickFocus);  // holds the focus until the keyboard is used, so that no button looks chosen
    view->setParent(this);
    view->move(0, 0);
    view->show();
    view->installEventFilter(this);
    hide();
    Screens::onChange(this, [this] { follow(); });
}

Popover::~Popover() {
    if (view) view->setParent(nullptr);
}

bool Popover::isShown() const {
    return isVisible();
}

bool Popover::justClosed() const {
    return dismissedFor.isValid() && dismissedFor.elapsed() < reclickTime;
}

QRect Popover::place(const QRect& anchor, QSize size, const QRect& area) {
    const int below = anchor.y() + anchor.height();
    const int above = anchor.y() - size.height();
    const bool fitsBelow = below + size.height() <= area.y() + area.height();
    const int y = fitsBelow || above < area.y() ? below : above;
    return Screens::clamped({QPoint(anchor.x() + (anchor.width() - size.width()) / 2, y), size}, area);
}

void Popover::show(std::optional<QRect> at) {
    if (!form) takeForm(bestForm());
    if (Screens::areXwayland() && (!at || form == Form::caughtPopup)) {
        catcher->cover([this, at](QPoint pointer) {
            const QRect area = Screens::available(pointer);
            anchor = at.value_or(isNearEdge(pointer, area) ? QRect(pointer, QSize(1, 1)) : topRight(area));
            open();
            if (form != Form::caughtPopup) catcher->hide();
        });
        return;
    }
    const QPoint pointer = QCursor::pos();
    anchor = at.value_or(X11::connection() ? QRect(pointer, QSize(1, 1)) : topRight(Screens::available(pointer)));
    open();
}

void Popover::open() {
    orderFocus();
    setFocus();
    follow();
    shownFor.start();
    QWidget::show();
    if (form == Form::window) activateWindow();
}

/// Compositors of the wlroots family put every managed window where they see fit.
Popover::Form Popover::bestForm() {
    if (!Screens::areXwayland()) return X11::connection() ? Form::popup : Form::window;
    return X11::windowManager() == "wlroots wm" ? Form::caughtPopup : Form::window;
}

void Popover::takeForm(Form taken) {
    form = taken;
    const Qt::WindowFlags type = taken == Form::window ? Qt::Tool | Qt::WindowStaysOnTopHint : Qt::Popup;
    setWindowFlags(type | Qt::FramelessWindowHint);
    dismissedFor.invalidate();
}

void Popover::close() {
    hide();
    dismissedFor.invalidate();
}

QRect Popover::asked() const {
    return view ? place(anchor, view->size(), Screens::available(anchor.center())) : geometry();
}

/// Keeps hanging at the anchor, in the view's size.
void Popover::follow() {
    setFixedSize(asked().size());  // a tiling compositor leaves such a window alone
    move(asked().topLeft());
    setBarsGiveWay(isVisible());
}

void Popover::orderFocus() {
    QWidget* previous = this;
    for (QWidget* const control : inVisualOrder(view)) {
        setTabOrder(previous, control);
        previous = control;
    }
}

/// A window that the window manager stacks stands below the bars, which it doesn't.
void Popover::setBarsGiveWay(bool giveWay) const {
    const bool covered = giveWay && form == Form::window && Screens::areXwayland();
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        auto* const bar = dynamic_cast<FloatingWindow*>(window);
        if (bar) bar->setGivesWay(covered && bar->frame().intersects(geometry()));
    }
}

bool Popover::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate && form == Form::window) hide();
    if (event->type() == QEvent::Show) setBarsGiveWay(true);
    return QWidget::event(event);
}

bool Popover::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && isVisible()) follow();
    if (event->type() == QEvent::Paint) setBarsGiveWay(isVisible());  // a control may have brought a bar
    return QWidget::eventFilter(watched, event);
}

void Popover::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    close();
}

/// A compositor that doesn't leave the window in its place never will; a popup is placed by itself. It comes when
/// the window's loss of the focus has been told, which the toolkit closes every popup at.
void Popover::moveEvent(QMoveEvent*) {
    const bool settling = isVisible() && form == Form::window && shownFor.elapsed() < settlingTime;
    if (!settling || !Screens::areXwayland() || pos() == asked().topLeft()) return;
    QMetaObject::invokeMethod(
        this, [this] { takeForm(Form::caughtPopup); }, Qt::QueuedConnection);
    QTimer::singleShot(focusTime, this, [this] { show(anchor); });
}

void Popover::hideEvent(QHideEvent*) {
    dismissedFor.start();
    setBarsGiveWay(false);
}
