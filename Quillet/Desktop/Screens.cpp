#include "Desktop/Screens.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <algorithm>

namespace {

QRect primaryFrame() {
    const QScreen* const primary = QGuiApplication::primaryScreen();
    return primary ? primary->geometry() : QRect();
}

int distance(const QRect& rect, QPoint point) {
    const QPoint nearest(std::clamp(point.x(), rect.left(), rect.right()),
                         std::clamp(point.y(), rect.top(), rect.bottom()));
    return (point - nearest).manhattanLength();
}

void watch(QScreen* screen, QTimer* settled) {
    const auto restart = [settled] { settled->start(); };
    QObject::connect(screen, &QScreen::geometryChanged, settled, restart);
    QObject::connect(screen, &QScreen::availableGeometryChanged, settled, restart);
}

}  // namespace

Rect Screens::fromToolkit(const QRect& rect) {
    const QRect primary = primaryFrame();
    return {double(rect.x() - primary.x()), double(primary.y() + primary.height() - rect.y() - rect.height()),
            double(rect.width()), double(rect.height())};
}

QRect Screens::toToolkit(Rect rect) {
    const QRect primary = primaryFrame();
    return {QPoint(qRound(rect.x) + primary.x(), primary.y() + primary.height() - qRound(rect.maxY())),
            QSize(qRound(rect.width), qRound(rect.height))};
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
    return fromToolkit(primary->availableGeometry());
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
    return found == screens.end() ? QRect() : (*found)->availableGeometry();
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
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, settled, [settled] { settled->start(); });
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, settled, [settled] { settled->start(); });
}

bool Screens::areXwayland() {
    return QGuiApplication::platformName() == QLatin1String("xcb") && qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}
