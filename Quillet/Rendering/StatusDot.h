#pragma once

#include "Desktop/Canvas.h"

/// The small glowing light beside a provider's name.
namespace StatusDot {

void draw(Canvas& canvas, Rect rect, Color color, double glowRadius);

}  // namespace StatusDot
