#pragma once

#include <QImage>
#include <vector>

#include "Drawing/Color.h"
#include "Drawing/Geometry.h"
#include "Drawing/Glow.h"
#include "Drawing/TextLine.h"

class QPainter;
class QRectF;

/// What every view draws with, in points with the origin at the bottom-left.
class Canvas {
public:
    /// The origin is `height` points below the painter's.
    Canvas(QPainter& painter, double height);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    void fill(Rect rect, Color color);
    void fillRounded(Rect rect, double radius, Color color);
    void strokeRounded(Rect rect, double radius, Color color, double lineWidth);
    void fillEllipse(Rect rect, Color color);
    void fillRoundedGradient(Rect rect, double radius, Color left, Color right);
    /// The colours are evenly spaced.
    void fillVerticalGradient(Rect rect, const std::vector<Color>& upwards);

    /// The light of an opaque rounded rectangle, to be drawn before the shape.
    void glowRounded(Rect rect, double radius, const Glow& glow);

    /// With the bottom-left corner of the text's line box at `origin`.
    void draw(const TextLine& text, Point origin, Color color);
    /// With the line box centred.
    void drawCentred(const TextLine& text, Point center, Color color);
    void drawClipped(const TextLine& text, Point origin, Color color, Rect clip, double clipRadius);

    void draw(const QImage& image, Rect rect, double opacity = 1);

private:
    QRectF toQt(Rect rect) const;

    QPainter& painter;
    const double height;
};
