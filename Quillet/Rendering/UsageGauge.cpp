#include "Rendering/UsageGauge.h"

#include <algorithm>

#include "Model/UsageFormat.h"
#include "Rendering/Palette.h"

namespace {

constexpr double lightening = 0.55;  // of the bar's right end
constexpr double glowAlpha = 0.9;

}  // namespace

const GaugeStyle UsageGauge::strip{
    .labelFont = {8.5, FontWeight::medium},
    .labelAlpha = 0.55,
    .percentSize = 10,
    .absentAlpha = 0.4,
    .resetSize = 7.5,
    .resetAlpha = 0.4,
    .gap = 6,
    .resetClearance = 26,
    .barInset = 5,
    .minBar = 6,
    .barHeight = 4,
    .trackAlpha = 0.12,
    .minFill = 4,
    .glowRadius = 4.5,
    .rowHeight = 14,
    .showsLongReset = false,
};

const GaugeStyle UsageGauge::panel{
    .labelFont = {9.5, FontWeight::medium},
    .labelAlpha = 0.5,
    .percentSize = 11,
    .absentAlpha = 0.35,
    .resetSize = 8,
    .resetAlpha = 0.35,
    .gap = 8,
    .resetClearance = 40,
    .barInset = 7,
    .minBar = 10,
    .barHeight = 5,
    .trackAlpha = 0.1,
    .minFill = 5,
    .glowRadius = 5,
    .rowHeight = 20,
    .showsLongReset = true,
};

void UsageGauge::drawBoth(Canvas& canvas, const GaugeStyle& style, const UsageSnapshot& snapshot,
                          Rect upper) {
    UsageGauge(style, UsageFormat::shortWindow, snapshot.dailyPercent, snapshot.dailyResetAt, upper)
        .draw(canvas);
    UsageGauge(style, UsageFormat::longWindow, snapshot.weeklyPercent,
               style.showsLongReset ? snapshot.weeklyResetAt : std::nullopt,
               upper.shifted(0, -style.rowHeight))
        .draw(canvas);
}

UsageGauge::UsageGauge(const GaugeStyle& chosen, const std::string& name,
                       std::optional<double> value, std::optional<Instant> resetAt, Rect area)
    : style(chosen),
      rect(area),
      percent(value),
      label(name, style.labelFont),
      percentText(UsageFormat::percentText(value), {style.percentSize, FontWeight::bold, 0, true}),
      used(percentText.width() + style.gap) {
    if (resetAt) placeReset(*resetAt);
    placeBar();
}

void UsageGauge::placeReset(Instant resetAt) {
    const std::string left = UsageFormat::resetText(resetAt);
    if (left == UsageFormat::now) return;
    TextLine text("↻ " + left, {style.resetSize, FontWeight::regular, 0, true});
    const double x = rect.maxX() - used - text.width();
    if (label.width() + rect.x + style.resetClearance >= x) return;
    used += text.width() + style.gap;
    resetText = std::move(text);
}

void UsageGauge::placeBar() {
    const double x = rect.x + label.width() + style.barInset;
    const double width = rect.maxX() - used - x;
    if (!(width > style.minBar)) return;
    track = Rect{x, rect.midY() - style.barHeight / 2, width, style.barHeight};
    if (!percent) return;
    fill = track;
    fill->width = std::max(Palette::filledShare(*percent) * width, style.minFill);
}

void UsageGauge::draw(Canvas& canvas) const {
    const auto atMiddle = [&](const TextLine& text, double x) {
        return Point{x, rect.midY() - text.height() / 2};
    };
    canvas.draw(label, atMiddle(label, rect.x), Color::white(style.labelAlpha));
    canvas.draw(percentText, atMiddle(percentText, rect.maxX() - percentText.width()),
                percent ? Palette::level(*percent) : Color::white(style.absentAlpha));
    if (resetText) {
        const double x = rect.maxX() - percentText.width() - style.gap - resetText->width();
        canvas.draw(*resetText, atMiddle(*resetText, x), Color::white(style.resetAlpha));
    }
    const double radius = style.barHeight / 2;
    if (track) canvas.fillRounded(*track, radius, Color::white(style.trackAlpha));
    if (!fill) return;
    const Color color = Palette::level(*percent);
    canvas.glowRounded(*fill, radius, {color.withAlpha(glowAlpha), style.glowRadius});
    canvas.fillRoundedGradient(*fill, radius, color, color.lightened(lightening));
}
