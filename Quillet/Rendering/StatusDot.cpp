#include "Rendering/StatusDot.h"

namespace {

constexpr double glowAlpha = 0.9;

}  // namespace

void StatusDot::draw(Canvas& canvas, Rect rect, Color color, double glowRadius) {
    canvas.glowRounded(rect, rect.width / 2,
                       {color.withAlpha(glowAlpha * color.alpha), glowRadius});
    canvas.fillEllipse(rect, color);
}
