#include "Rendering/ModelTag.h"

#include <QString>
#include <algorithm>

#include "Model/ModelNaming.h"
#include "Rendering/Palette.h"

namespace {

constexpr double lightening = 0.45;  // of the text
constexpr double lineWidth = 0.75;
constexpr double textRise = 0.5;  // above the middle

}  // namespace

const TagStyle ModelTag::strip{
    .font = {8, FontWeight::semibold},
    .height = 12,
    .padding = 4,
    .maxWidth = 100,
    .radius = 3,
    .fillAlpha = 0.18,
    .lineAlpha = 0.45,
};

const TagStyle ModelTag::panel{
    .font = {9.5, FontWeight::semibold},
    .height = 15,
    .padding = 5,
    .maxWidth = std::nullopt,
    .radius = 4,
    .fillAlpha = 0.16,
    .lineAlpha = 0.4,
};

std::optional<ModelTag> ModelTag::of(const UsageSnapshot& snapshot, bool showsPlan) {
    if (auto model = ModelNaming::combined(snapshot.modelLabel, snapshot.effortLabel)) {
        return ModelTag{std::move(*model), Palette::accent(snapshot.provider)};
    }
    if (!showsPlan || !snapshot.planLabel) return std::nullopt;
    return ModelTag{QString::fromStdString(*snapshot.planLabel).toUpper().toStdString(),
                    Palette::planGrey};
}

void ModelTag::draw(Canvas& canvas, const TagStyle& style, Point origin) const {
    const TextLine line(text, style.font);
    const double natural = line.width() + 2 * style.padding;
    const Rect rect{origin.x, origin.y, std::min(natural, style.maxWidth.value_or(natural)),
                    style.height};
    canvas.fillRounded(rect, style.radius, base.withAlpha(style.fillAlpha));
    canvas.strokeRounded(rect, style.radius, base.withAlpha(style.lineAlpha), lineWidth);
    const Point start{rect.x + style.padding, rect.midY() - line.height() / 2 + textRise};
    const Color color = base.lightened(lightening);
    if (style.maxWidth) {
        canvas.drawClipped(line, start, color, rect, style.radius);
    } else {
        canvas.draw(line, start, color);
    }
}
