// In the middle of a long bar every column of the blur is the same. So a short tile is blurred and
// its middle column stretched.
#include "Drawing/Glow.h"

#include <QCache>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace {

// Everything here is in device pixels.

std::vector<float> gaussianKernel(double deviation) {
    const int reach = static_cast<int>(std::ceil(3 * deviation));
    std::vector<float> kernel;
    for (int i = -reach; i <= reach; ++i)
        kernel.push_back(static_cast<float>(std::exp(-i * i / (2 * deviation * deviation))));
    const float sum = std::accumulate(kernel.begin(), kernel.end(), 0.0F);
    for (float& weight : kernel)
        weight /= sum;
    return kernel;
}

/// A plane of alpha values, 0 to 1.
struct Plane {
    int width;
    int height;
    std::vector<float> alpha = std::vector<float>(std::size_t(width) * std::size_t(height));

    float* row(int y) { return alpha.data() + std::ptrdiff_t(y) * width; }
    const float* row(int y) const { return alpha.data() + std::ptrdiff_t(y) * width; }
};

/// Adds one weight at a time over whole rows, which the compiler turns into vector instructions.
Plane blurredRows(const Plane& source, const std::vector<float>& kernel) {
    const int reach = static_cast<int>(kernel.size() / 2);
    Plane result{source.width, source.height};
    for (int y = 0; y < source.height; ++y) {
        float* row = result.row(y);
        const float* other = source.row(y);
        for (int shift = -reach; shift <= reach; ++shift) {
            const float weight = kernel.data()[shift + reach];
            const int last = std::min(source.width, source.width - shift);
            for (int x = std::max(0, -shift); x < last; ++x)
                row[x] += weight * other[x + shift];
        }
    }
    return result;
}

Plane transposed(const Plane& source) {
    Plane result{source.height, source.width};
    for (int y = 0; y < source.height; ++y)
        for (int x = 0; x < source.width; ++x)
            result.row(x)[y] = source.row(y)[x];
    return result;
}

Plane alphaOfShape(const QRectF& shape, double cornerRadius, QSize size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(shape, cornerRadius, cornerRadius);
    painter.end();

    Plane plane{size.width(), size.height()};
    for (int y = 0; y < size.height(); ++y) {
        const auto* pixels = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        std::transform(pixels, pixels + size.width(), plane.row(y),
                       [](QRgb pixel) { return static_cast<float>(qAlpha(pixel)) / 255; });
    }
    return plane;
}

QImage colored(Plane plane, const Color& color) {
    QImage image(plane.width, plane.height, QImage::Format_ARGB32_Premultiplied);
    const QRgb base =
        QColor::fromRgbF(float(color.red), float(color.green), float(color.blue)).rgb() & RGB_MASK;
    const float full = static_cast<float>(color.alpha * 255);
    for (int y = 0; y < plane.height; ++y) {
        auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(y));
        std::transform(plane.row(y), plane.row(y) + plane.width, pixels, [&](float alpha) {
            return qPremultiply(base | static_cast<QRgb>(qRound(alpha * full)) << 24);
        });
    }
    return image;
}

/// All that a tile's pixels depend on.
struct Tile {
    QSize size;
    QRectF shape;
    double cornerRadius;
    double deviation;
    Color color;

    bool operator==(const Tile&) const = default;
};

std::size_t qHash(const Tile& tile, std::size_t seed) {
    return qHashMulti(seed, tile.size.width(), tile.size.height(), tile.shape.x(), tile.shape.y(),
                      tile.shape.width(), tile.color.red, tile.color.alpha);
}

QImage blurred(const Tile& tile) {
    const auto kernel = gaussianKernel(tile.deviation);
    const Plane alpha = alphaOfShape(tile.shape, tile.cornerRadius, tile.size);
    const Plane columns = transposed(blurredRows(alpha, kernel));
    return colored(transposed(blurredRows(columns, kernel)), tile.color);
}

/// With its edges at quarters of a pixel, which no blur shows, so that more tiles are alike.
QRectF atQuarters(const QRectF& rect) {
    const auto nearest = [](double edge) { return std::round(edge * 4) / 4; };
    return {QPointF(nearest(rect.left()), nearest(rect.top())),
            QPointF(nearest(rect.right()), nearest(rect.bottom()))};
}

/// Refreshes draw mostly the same glows, so their tiles are kept.
QImage imageOf(const Tile& tile) {
    constexpr int maxBytes = 512 * 1024;
    static QCache<Tile, QImage> cache(maxBytes);
    if (const QImage* const known = cache.object(tile)) return *known;
    QImage image = blurred(tile);
    cache.insert(tile, new QImage(image), static_cast<int>(image.sizeInBytes()));
    return image;
}

}  // namespace

void Glow::paint(QPainter& painter, const QRectF& shape, double cornerRadius) const {
    const QTransform toDevice = painter.deviceTransform();
    const double scale = toDevice.m11();
    const double deviation = blurRadius / 2 * scale;
    const QRectF device = atQuarters(toDevice.mapRect(shape));
    if (!(deviation > 0) || device.isEmpty()) return;

    const int reach = static_cast<int>(std::ceil(3 * deviation));
    const QRect box = device.toAlignedRect().adjusted(-reach, -reach, reach, reach);
    // The tile is wide enough that no corner's light reaches its middle column.
    const int cap = 2 * reach + static_cast<int>(std::ceil(cornerRadius * scale)) + 1;
    const int removed = std::max(0, box.width() - 2 * cap - 1);
    const QRectF inTile = device.translated(-box.topLeft()).adjusted(0, 0, -removed, 0);
    const QImage tile = imageOf(
        {{box.width() - removed, box.height()}, inTile, cornerRadius * scale, deviation, color});

    const QTransform fromDevice = toDevice.inverted();
    const auto put = [&](int x, int width, int tileX, int tileWidth) {
        const QRectF target = fromDevice.mapRect(QRectF(box.x() + x, box.y(), width, box.height()));
        painter.drawImage(target, tile, QRectF(tileX, 0, tileWidth, box.height()));
    };
    if (removed == 0) {
        put(0, box.width(), 0, box.width());
        return;
    }
    put(0, cap, 0, cap);
    put(cap, removed + 1, cap, 1);
    put(cap + removed + 1, cap, cap + 1, cap);
}
