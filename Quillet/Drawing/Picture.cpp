#include "Drawing/Picture.h"

#include <QPainter>

QImage Picture::blank(Size size, double scale) {
    QImage image(static_cast<int>(size.width * scale), static_cast<int>(size.height * scale),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    return image;
}

QImage Picture::of(Size size, double scale, const std::function<void(Canvas&)>& paint) {
    QImage image = blank(size, scale);
    QPainter painter(&image);
    Canvas canvas(painter, size.height);
    paint(canvas);
    return image;
}
