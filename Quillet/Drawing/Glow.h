#pragma once

#include <QRectF>

#include "Drawing/Color.h"

class QPainter;

/// A soft light around a shape: the Gaussian blur of the shape's own alpha in one colour.
struct Glow {
    Color color;
    double blurRadius = 0;  ///< Points, as a shadow's blur radius: twice the standard deviation.

    /// Paints the light of an opaque rounded rectangle, but not the rectangle.
    void paint(QPainter& painter, const QRectF& shape, double cornerRadius) const;
};
