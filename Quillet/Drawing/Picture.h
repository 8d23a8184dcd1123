#pragma once

#include <QImage>
#include <functional>

#include "Drawing/Canvas.h"

/// Pictures drawn off screen.
namespace Picture {

/// A transparent picture of `size` points at `scale` pixels per point, rounded down, painted by
/// `paint`.
QImage of(Size size, double scale, const std::function<void(Canvas&)>& paint);

/// A transparent picture of that size, for a widget to be rendered on.
QImage blank(Size size, double scale);

}  // namespace Picture
