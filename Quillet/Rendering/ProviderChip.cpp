#include "Rendering/ProviderChip.h"

#include "Drawing/Picture.h"
#include "Rendering/Palette.h"

namespace {

constexpr double pictureSide = 22;

constexpr struct {
    double radius = 0.24;   // of the width
    double textSize = 0.4;  // of the height
    double dimmedBody = 0.25;
    double text = 0.82;
    double dimmedText = 0.5;
} style;

}  // namespace

void ProviderChip::draw(Canvas& canvas, Provider provider, Rect rect, bool dimmed) {
    const Color body = Palette::accent(provider).withAlpha(dimmed ? style.dimmedBody : 1);
    canvas.fillRounded(rect, style.radius * rect.width, body);
    const TextLine initials(Palette::initials(provider),
                            {style.textSize * rect.height, FontWeight::bold});
    canvas.drawCentred(initials, rect.center(),
                       Color::black(dimmed ? style.dimmedText : style.text));
}

QImage ProviderChip::picture(Provider provider, double scale) {
    return Picture::of({pictureSide, pictureSide}, scale, [&](Canvas& canvas) {
        draw(canvas, provider, {0, 0, pictureSide, pictureSide}, false);
    });
}
