#include "Windowing/Screens.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <algorithm>
#include <bit>

#include "Windowing/WindowSystem.h"
#include "Windowing/X11.h"

namespace {

constexpr int panelHeight = 32;  // points; assumed where nobody tells

QRect primaryFrame() {
    const QScreen* const primary = QGuiApplication::primaryScreen();
    return primary ? primary->geometry() : QRect();
}

int distance(const QRect& rect, QPoint point) {
    const QPoint nearest(std::clamp(point.x(), rect.left(), rect.right()),
                         std::clamp(point.y(), rect.top(), rect.bottom()));
    return (point - nearest).manhattanLength();
}

/// In the screen's own pixels.
QRect native(const QScreen* screen) {
    return {screen->geometry().topLeft(), screen->geometry().size() * screen->devicePixelRatio()};
}

/// All screens together, in their own pixels.
QRect nativeDesktop() {
    QRect all;
    for (const QScreen* const each : QGuiApplication::screens())
        all |= native(each);
    return all;
}

/// A part of the screen, from its own pixels to Qt's coordinates.
QRect fromNative(const QScreen* screen, QRect part) {
    const QPoint corner = native(screen).topLeft();
    const double ratio = screen->devicePixelRatio();
    return {corner + (part.topLeft() - corner) / ratio, part.size() / ratio};
}

/// Qt knows of panels only while there is a single screen, and not at once when it becomes one.
QRect withoutPanels(const QScreen* screen) {
    const QRect all = nativeDesktop(), whole = native(screen);
    QRect rest = whole;
    for (const auto& strut : X11::struts())
        rest &= Screens::without(std::bit_cast<Screens::Strut>(strut), whole,
                                 {all.right() + 1, all.bottom() + 1});
    return fromNative(screen, rest);
}

/// Only the compositor sees the panels of a Wayland desktop. Some compositors leave their room out
/// of the work area. Under the others a panel may stand at the top and at the bottom.
QRect withinWorkArea(const QScreen* screen) {
    const QRect told = X11::workArea();
    const QRect rest = native(screen) & told;
    if (rest.isEmpty() || told.contains(nativeDesktop()))
        return screen->geometry().adjusted(0, panelHeight, 0, -panelHeight);
    return fromNative(screen, rest);
}

}  // namespace

Rect Screens::fromQt(const QRect& rect) {
    const QRect primary = primaryFrame();
    return {double(rect.x() - primary.x()),
            double(primary.y() + primary.height() - rect.y() - rect.height()), double(rect.width()),
            double(rect.height())};
}

QRect Screens::toQt(Rect rect) {
    const QRect primary = primaryFrame();
    return {
        QPoint(qRound(rect.x) + primary.x(), primary.y() + primary.height() - qRound(rect.maxY())),
        QSize(qRound(rect.width), qRound(rect.height))};
}

QPoint Screens::fromNative(QPoint point) {
    for (const QScreen* const screen : QGuiApplication::screens()) {
        const QPoint corner = screen->geometry().topLeft();
        if (native(screen).contains(point))
            return corner + (point - corner) / screen->devicePixelRatio();
    }
    return point;
}

bool Screens::contain(Point point) {
    return std::ranges::any_of(QGuiApplication::screens(), [point](const QScreen* screen) {
        return fromQt(screen->geometry()).contains(point);
    });
}

bool Screens::meet(const QRect& frame) {
    return std::ranges::any_of(QGuiApplication::screens(), [&frame](const QScreen* screen) {
        return screen->geometry().intersects(frame);
    });
}

QRect Screens::without(const Strut& panel, QRect screen, QSize desktop) {
    const auto meets = [](int from, int to, int low, int high) {
        return from <= high && to >= low;
    };
    const bool isAbove = meets(panel.topFrom, panel.topTo, screen.left(), screen.right());
    const bool isBelow = meets(panel.bottomFrom, panel.bottomTo, screen.left(), screen.right());
    const bool isLeft = meets(panel.leftFrom, panel.leftTo, screen.top(), screen.bottom());
    const bool isRight = meets(panel.rightFrom, panel.rightTo, screen.top(), screen.bottom());
    const int bottom = desktop.height() - 1 - panel.bottom,
              right = desktop.width() - 1 - panel.right;
    // A panel that would take all of it stands on another screen, farther from that edge.
    QRect rest = screen;
    if (isAbove && panel.top > screen.top() && panel.top <= screen.bottom()) rest.setTop(panel.top);
    if (isBelow && bottom < screen.bottom() && bottom >= screen.top()) rest.setBottom(bottom);
    if (isLeft && panel.left > screen.left() && panel.left <= screen.right())
        rest.setLeft(panel.left);
    if (isRight && right < screen.right() && right >= screen.left()) rest.setRight(right);
    return rest;
}

QRect Screens::desktop() {
    QRect all;
    for (const QScreen* const screen : QGuiApplication::screens())
        all |= screen->geometry();
    return all;
}

QRect Screens::available(QPoint nearest) {
    const auto screens = QGuiApplication::screens();
    const auto found = std::ranges::min_element(screens, {}, [nearest](const QScreen* screen) {
        return distance(screen->geometry(), nearest);
    });
    if (found == screens.end()) return {};
    if (WindowSystem::isXwayland()) return withinWorkArea(*found);
    return WindowSystem::isX11() ? withoutPanels(*found) : (*found)->availableGeometry();
}

QRect Screens::availableOnPrimary() {
    return available(primaryFrame().center());
}

QRect Screens::clamped(QRect rect, QRect area) {
    rect.moveLeft(std::max(area.left(), std::min(rect.left(), area.right() + 1 - rect.width())));
    rect.moveTop(std::max(area.top(), std::min(rect.top(), area.bottom() + 1 - rect.height())));
    return rect;
}

void Screens::onChange(QObject* receiver, const std::function<void()>& changed) {
    auto* const settled = new QTimer(receiver);  // one change of monitors comes as many signals
    settled->setSingleShot(true);
    settled->setInterval(0);
    QObject::connect(settled, &QTimer::timeout, receiver, changed);
    const auto restart = [settled] { settled->start(); };
    const auto watch = [settled, restart](QScreen* screen) {
        QObject::connect(screen, &QScreen::geometryChanged, settled, restart);
        QObject::connect(screen, &QScreen::availableGeometryChanged, settled, restart);
    };
    for (QScreen* const screen : QGuiApplication::screens())
        watch(screen);
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, settled, watch);
    for (const auto change : {&QGuiApplication::screenAdded, &QGuiApplication::screenRemoved,
                              &QGuiApplication::primaryScreenChanged})
        QObject::connect(qGuiApp, change, settled, restart);
}
