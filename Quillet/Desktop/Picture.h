#pragma once

#include <QImage>
#include <functional>

#include "Desktop/Canvas.h"

class QWidget;

/// Pictures drawn off screen.
namespace Picture {

/// A transparent picture of `size` points at `scale` pixels per point, rounded down, painted by
/// `paint`.
QImage of(Size size, double scale, const std::function<void(Canvas&)>& paint);

/// The widget with its children, as it would stand on a screen, whether or not it is shown.
QImage of(QWidget& widget, double scale);

}  // namespace Picture
