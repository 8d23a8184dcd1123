#include "Windowing/Screens.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <algorithm>

#include "Windowing/X11.h"

namespace {

constexpr int panelHeight = 32;  // points that a panel is high, where nobody tells

QRect primaryFrame() {
    const QScreen* const primary = QGuiApplication::primaryScreen();
    return primary ? primary->geometry() : QRect();
}

int distance(const QRect& rect, QPoint point) {
    const QPoint nearest(std::clamp(point.x(), rect.left(), rect.right()),
                         std::clamp(point.y(), rect.top(), rect.bottom()));
    return (point - nearest).manhattanLength();
}

/// In the screens' own pixels.
QRect native(const QScreen* screen) {
    return {screen->geometry().topLeft(), screen->geometry().size() * screen->devicePixelRatio()};
}

std::vector<Screens::Strut> panels() {
    static const xcb_atom_t declared = X11::atom("_NET_WM_STRUT_PARTIAL");
    std::vector<Screens::Strut> struts;
    for (const auto& numbers : X11::properties(X11::managedWindows(), declared)) {
        if (numbers.size() < 12) continue;
        const auto at = [&numbers](std::size_t index) { return static_cast<int>(numbers[index]); };
        struts.push_back(
            {at(0), at(1), at(2), at(3), at(4), at(5), at(6), at(7), at(8), at(9), at(10), at(11)});
    }
    return struts;
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
    for (const Screens::Strut& panel : panels())
        rest &= Screens::without(panel, whole, {all.right() + 1, all.bottom() + 1});
    return fromNative(screen, rest);
}

/// A Wayland desktop's panels are seen by the compositor alone. Some keep their room free in the
/// work area; where none does, most panels stand at the top or the bottom.
QRect withinWorkArea(const QScreen* screen) {
    const QRect told = X11::workArea();
    const QRect rest = native(screen) & told;
    if (rest.isEmpty() || told.contains(nativeDesktop()))
        return screen->geometry().adjusted(0, panelHeight, 0, -panelHeight);
    return fromNative(screen, rest);
}

void watch(QScreen* screen, QTimer* settled) {
    const auto restart = [settled] { settled->start(); };
    QObject::connect(screen, &QScreen::geometryChanged, settled, restart);
    QObject::connect(screen, &QScreen::availableGeometryChanged, settled, restart);
}

}  // namespace

Rect Screens::fromToolkit(const QRect& rect) {
    const QRect primary = primaryFrame();
    return {double(rect.x() - primary.x()),
            double(primary.y() + primary.height() - rect.y() - rect.height()), double(rect.width()),
            double(rect.height())};
}

QRect Screens::toToolkit(Rect rect) {
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

bool Screens::contains(Rect rect, Point point) {
    return point.x >= rect.x && point.x < rect.maxX() && point.y >= rect.y && point.y < rect.maxY();
}

bool Screens::hold(Point point) {
    return std::ranges::any_of(QGuiApplication::screens(), [point](const QScreen* screen) {
        return contains(fromToolkit(screen->geometry()), point);
    });
}

std::optional<Rect> Screens::visibleFrame() {
    const QScreen* const primary = QGuiApplication::primaryScreen();
    if (!primary) return std::nullopt;
    return fromToolkit(available(primary));
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
    // A panel that would take it all stands on another screen, farther from the edge that both
    // count from.
    QRect rest = screen;
    if (isAbove && panel.top > screen.top() && panel.top <= screen.bottom()) rest.setTop(panel.top);
    if (isBelow && bottom < screen.bottom() && bottom >= screen.top()) rest.setBottom(bottom);
    if (isLeft && panel.left > screen.left() && panel.left <= screen.right())
        rest.setLeft(panel.left);
    if (isRight && right < screen.right() && right >= screen.left()) rest.setRight(right);
    return rest;
}

QRect Screens::available(const QScreen* screen) {
    if (areXwayland()) return withinWorkArea(screen);
    return X11::connection() ? withoutPanels(screen) : screen->availableGeometry();
}

QRect Screens::desktop() {
    QRect all;
    for (const QScreen* const screen : QGuiApplication::screens())
        all |= screen->geometry();
    return all;
}

QRect Screens::available(QPoint nearest) {
    const auto screens = QGuiApplication::screens();
    const auto closer = [nearest](const QScreen* a, const QScreen* b) {
        return distance(a->geometry(), nearest) < distance(b->geometry(), nearest);
    };
    const auto found = std::ranges::min_element(screens, closer);
    return found == screens.end() ? QRect() : available(*found);
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
    for (QScreen* const screen : QGuiApplication::screens())
        watch(screen, settled);
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, settled, [settled](QScreen* screen) {
        watch(screen, settled);
        settled->start();
    });
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, settled,
                     [settled] { settled->start(); });
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, settled,
                     [settled] { settled->start(); });
}

bool Screens::areXwayland() {
    return X11::connection() && qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}
