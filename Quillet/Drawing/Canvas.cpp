#include "Drawing/Canvas.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <functional>

#include "Drawing/Cache.h"

namespace {

QColor toolkitColor(Color color) {
    return QColor::fromRgbF(float(color.red), float(color.green), float(color.blue),
                            float(color.alpha));
}

/// All that the pixels of a filled and stroked shape depend on, in pixels.
struct OutlinedShape {
    double x, y, width, height;  // from whole pixels near it
    double cornerRadius;
    Color filling;
    Color line;
    double lineWidth;

    bool operator==(const OutlinedShape&) const = default;
};

std::size_t qHash(const OutlinedShape& shape, std::size_t seed) {
    return qHashMulti(seed, shape.x, shape.y, shape.width, shape.height, shape.cornerRadius,
                      shape.filling.red, shape.line.red, shape.line.alpha, shape.lineWidth);
}

/// A transparent image of `size` pixels with what `drawOn` draws on a canvas of `height`.
QImage drawn(QSize size, const QTransform& toPixels, double height,
             const std::function<void(Canvas&)>& drawOn) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setTransform(toPixels);
    Canvas canvas(painter, height);
    drawOn(canvas);
    return image;
}

/// Onto the device's pixels, one to one, with the image's top-left corner at `corner`.
void putPixels(QPainter& painter, QPoint corner, const QImage& image) {
    painter.save();
    painter.setTransform(painter.deviceTransform().inverted(), true);
    painter.drawImage(corner, image);
    painter.restore();
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

/// The toolkit counts downwards from the top.
QRectF Canvas::toolkitRect(Rect rect) const {
    return {rect.x, height - rect.maxY(), rect.width, rect.height};
}

void Canvas::fill(Rect rect, Color color) {
    painter.fillRect(toolkitRect(rect), toolkitColor(color));
}

void Canvas::fillRounded(Rect rect, double radius, Color color) {
    painter.setBrush(toolkitColor(color));
    painter.drawRoundedRect(toolkitRect(rect), radius, radius);
}

void Canvas::strokeRounded(Rect rect, double radius, Color color, double lineWidth) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(toolkitColor(color), lineWidth));
    painter.drawRoundedRect(toolkitRect(rect), radius, radius);
    painter.setPen(Qt::NoPen);
}

// The toolkit takes tens of microseconds for an outline, and sometimes a thread: hence the kept
// image.
void Canvas::fillAndStrokeRounded(Rect rect, double radius, Color filling, Color line,
                                  double lineWidth) {
    constexpr int mostBytes = 512 * 1024;
    static QCache<OutlinedShape, QImage> cache(mostBytes);

    const QTransform toDevice = painter.deviceTransform();
    const QRect box = toDevice.mapRect(toolkitRect(rect.inset(-lineWidth))).toAlignedRect();
    const QTransform toBox = toDevice * QTransform::fromTranslate(-box.x(), -box.y());
    const auto drawOn = [&](Canvas& canvas) {
        canvas.fillRounded(rect, radius, filling);
        canvas.strokeRounded(rect, radius, line, lineWidth);
    };
    if (box.isEmpty() || box.width() > mostBytes / 4 / box.height()) return drawOn(*this);

    const auto newImage = [&] { return drawn(box.size(), toBox, height, drawOn); };
    const QRectF shape = toBox.mapRect(toolkitRect(rect));
    const double scale = toDevice.m11();
    const OutlinedShape key{shape.x(),      shape.y(), shape.width(), shape.height(),
                            radius * scale, filling,   line,          lineWidth * scale};
    putPixels(painter, box.topLeft(),
              Cache::findOrMake(cache, key, newImage, std::mem_fn(&QImage::sizeInBytes)));
}

void Canvas::fillEllipse(Rect rect, Color color) {
    painter.setBrush(toolkitColor(color));
    painter.drawEllipse(toolkitRect(rect));
}

void Canvas::fillRoundedGradient(Rect rect, double radius, Color left, Color right) {
    QLinearGradient gradient(rect.x, 0, rect.maxX(), 0);
    gradient.setColorAt(0, toolkitColor(left));
    gradient.setColorAt(1, toolkitColor(right));
    painter.setBrush(gradient);
    painter.drawRoundedRect(toolkitRect(rect), radius, radius);
}

void Canvas::fillVerticalGradient(Rect rect, const std::vector<Color>& upwards) {
    const QRectF area = toolkitRect(rect);
    QLinearGradient gradient(area.bottomLeft(), area.topLeft());
    const double last = static_cast<double>(upwards.size() - 1);
    for (std::size_t i = 0; i < upwards.size(); ++i) {
        gradient.setColorAt(static_cast<double>(i) / last, toolkitColor(upwards[i]));
    }
    painter.fillRect(area, gradient);
}

void Canvas::glowRounded(Rect rect, double radius, const Glow& glow) {
    glow.paint(painter, toolkitRect(rect), radius);
}

void Canvas::draw(const TextLine& text, Point origin, Color color) {
    painter.setPen(toolkitColor(color));
    text.draw(painter, origin.x, height - origin.y - text.height());
    painter.setPen(Qt::NoPen);
}

void Canvas::drawCentred(const TextLine& text, Point center, Color color) {
    draw(text, {center.x - text.width() / 2, center.y - text.height() / 2}, color);
}

void Canvas::drawClipped(const TextLine& text, Point origin, Color color, Rect clip,
                         double clipRadius) {
    QPainterPath outline;
    outline.addRoundedRect(toolkitRect(clip), clipRadius, clipRadius);
    painter.save();
    painter.setClipPath(outline, Qt::IntersectClip);
    draw(text, origin, color);
    painter.restore();
}

void Canvas::draw(const QImage& image, Rect rect, double opacity) {
    painter.setOpacity(opacity);
    painter.drawImage(toolkitRect(rect), image);
    painter.setOpacity(1);
}
