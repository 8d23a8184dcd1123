#include "Drawing/Canvas.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace {

QColor qtColor(Color color) {
    return QColor::fromRgbF(float(color.red), float(color.green), float(color.blue),
                            float(color.alpha));
}

}  // namespace

Canvas::Canvas(QPainter& target, double canvasHeight) : painter(target), height(canvasHeight) {
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    painter.setPen(Qt::NoPen);
}

Canvas::~Canvas() {
    painter.restore();
}

QRectF Canvas::toQt(Rect rect) const {
    return {rect.x, height - rect.maxY(), rect.width, rect.height};
}

void Canvas::fill(Rect rect, Color color) {
    painter.fillRect(toQt(rect), qtColor(color));
}

void Canvas::fillRounded(Rect rect, double radius, Color color) {
    painter.setBrush(qtColor(color));
    painter.drawRoundedRect(toQt(rect), radius, radius);
}

void Canvas::strokeRounded(Rect rect, double radius, Color color, double lineWidth) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(qtColor(color), lineWidth));
    painter.drawRoundedRect(toQt(rect), radius, radius);
    painter.setPen(Qt::NoPen);
}

void Canvas::fillEllipse(Rect rect, Color color) {
    painter.setBrush(qtColor(color));
    painter.drawEllipse(toQt(rect));
}

void Canvas::fillRoundedGradient(Rect rect, double radius, Color left, Color right) {
    QLinearGradient gradient(rect.x, 0, rect.maxX(), 0);
    gradient.setColorAt(0, qtColor(left));
    gradient.setColorAt(1, qtColor(right));
    painter.setBrush(gradient);
    painter.drawRoundedRect(toQt(rect), radius, radius);
}

void Canvas::fillVerticalGradient(Rect rect, const std::vector<Color>& upwards) {
    const QRectF area = toQt(rect);
    QLinearGradient gradient(area.bottomLeft(), area.topLeft());
    const double last = static_cast<double>(upwards.size() - 1);
    for (std::size_t i = 0; i < upwards.size(); ++i) {
        gradient.setColorAt(static_cast<double>(i) / last, qtColor(upwards[i]));
    }
    painter.fillRect(area, gradient);
}

void Canvas::glowRounded(Rect rect, double radius, const Glow& glow) {
    glow.paint(painter, toQt(rect), radius);
}

void Canvas::draw(const TextLine& text, Point origin, Color color) {
    painter.setPen(qtColor(color));
    text.draw(painter, origin.x, height - origin.y - text.height());
    painter.setPen(Qt::NoPen);
}

void Canvas::drawCentred(const TextLine& text, Point center, Color color) {
    draw(text, {center.x - text.width() / 2, center.y - text.height() / 2}, color);
}

void Canvas::drawClipped(const TextLine& text, Point origin, Color color, Rect clip,
                         double clipRadius) {
    QPainterPath outline;
    outline.addRoundedRect(toQt(clip), clipRadius, clipRadius);
    painter.save();
    painter.setClipPath(outline, Qt::IntersectClip);
    draw(text, origin, color);
    painter.restore();
}

void Canvas::draw(const QImage& image, Rect rect, double opacity) {
    painter.setOpacity(opacity);
    painter.drawImage(toQt(rect), image);
    painter.setOpacity(1);
}
