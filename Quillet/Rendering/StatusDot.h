#pragma once

#include "Drawing/Canvas.h"

/// The small glowing light beside a provider's name.
namespace StatusDot {

/// `glowRadius` is in points, as a shadow's blur radius.
void draw(Canvas& canvas, Rect rect, Color color, double glowRadius);

}  // namespace StatusDot
