#include "StatusItem/CornerItem.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <cmath>

#include "Drawing/Canvas.h"
#include "Windowing/Screens.h"
#include "Windowing/WindowSystem.h"

namespace {

constexpr struct {
    double height = 26;
    double sidePadding = 6;
    double cornerRadius = 6;
    Color background = Color::grey(0.02, 0.94);
} look;

Size pointSize(const QImage& image) {
    const QSizeF size = image.deviceIndependentSize();
    return {size.width(), size.height()};
}

}  // namespace

CornerItem::CornerItem(Activate activate) : onActivate(std::move(activate)) {
    WindowSystem::makeOverlay(this);
    setAttribute(Qt::WA_AlwaysShowToolTips);  // its window is never the active one
    Screens::onChange(this, [this] { place(); });
}

void CornerItem::place() {
    if (!content.wide) return;
    const double ratio = QGuiApplication::primaryScreen()->devicePixelRatio();
    picture = content.wide(std::ceil(ratio));  // scaled down once, never up
    const int width = static_cast<int>(pointSize(picture).width + 2 * look.sidePadding);
    const QRect available = Screens::availableOnPrimary();
    setFixedSize(width, int(look.height));  // keeps it from being tiled
    move(available.x() + available.width() - width, available.y());
    show();
    raise();
}

void CornerItem::setContent(const StatusContent& newContent) {
    content = newContent;
    setToolTip(content.richText());
    place();
    update();
}

void CornerItem::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Canvas canvas(painter, height());
    const Rect bounds{0, 0, double(width()), double(height())};
    canvas.fillRounded(bounds, look.cornerRadius, look.background);
    canvas.draw(picture, Rect::centred(bounds.center(), pointSize(picture)));
}

void CornerItem::resizeEvent(QResizeEvent*) {
    WindowSystem::cutCorners(this, look.cornerRadius);
}

void CornerItem::mousePressEvent(QMouseEvent* event) {
    isPressed = event->button() == Qt::LeftButton;
}

/// On X11 the press that closes an open popover doesn't come here.
void CornerItem::mouseReleaseEvent(QMouseEvent* event) {
    const bool isClick = rect().contains(event->position().toPoint());
    if (std::exchange(isPressed, false) && isClick)
        onActivate({geometry(), {}, WindowSystem::isWayland()});
}

void CornerItem::contextMenuEvent(QContextMenuEvent*) {
    menu.show(content.menu, mapToGlobal(rect().bottomLeft()));
}
