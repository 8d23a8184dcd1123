#include "Rendering/ProviderName.h"

namespace {

constexpr double glowAlpha = 0.9;

}  // namespace

void ProviderName::draw(Canvas& canvas, Provider provider, Point origin, Color nameColor,
                        Color dotColor) const {
    const TextLine name(std::string(provider.rawValue()), font);
    canvas.draw(name, origin, nameColor);
    const Rect light{origin.x + name.width() + dotGap, origin.y + dotRise, dot, dot};
    canvas.glowRounded(light, dot / 2,
                       {dotColor.withAlpha(glowAlpha * dotColor.alpha), glowRadius});
    canvas.fillEllipse(light, dotColor);
}
