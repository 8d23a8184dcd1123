#include "StripView/StripView.h"

#include <QPainter>
#include <algorithm>

#include "Rendering/ModelTag.h"
#include "Rendering/Palette.h"
#include "Rendering/StatusDot.h"
#include "Rendering/UsageGauge.h"

namespace {

constexpr struct {
    double width = 216;
    double gap = 14;
    double margin = 8;  // of the strip, left and right
    double icon = 22;
    double unhealthyIcon = 0.5;  // opacity
    double textX = 28;
    TextStyle name{11, FontWeight::semibold};
    double nameY = 15.5;
    double tagY = 1.5;
    double dotGap = 4;
    double dotY = 19;
    double dot = 5;
    double dotGlowRadius = 3;
    double unhealthyDot = 0.3;
    double gaugeX = 102;
    double upperGaugeY = 15.5;
    double lowerGaugeY = 1.5;
    Size gauge{114, 13};
    TextStyle message{9.5, FontWeight::regular};
} segment;

constexpr struct {
    double inset = 5;  // from top and bottom
    double width = 1;
    double endAlpha = 0.02;
    double middleAlpha = 0.42;
} divider;

bool isHealthy(const StripView::Entry& entry) {
    return entry.snapshot && !entry.snapshot->error;
}

void drawDivider(Canvas& canvas, double x, Color accent, double areaHeight) {
    const Color end = accent.withAlpha(divider.endAlpha);
    const Rect line{x - divider.width / 2, divider.inset, divider.width,
                    areaHeight - 2 * divider.inset};
    canvas.fillVerticalGradient(line, {end, accent.withAlpha(divider.middleAlpha), end});
}

void drawIcon(Canvas& canvas, const StripView::Entry& entry, double x, double areaHeight) {
    if (!entry.icon) return;
    const Rect rect{x, (areaHeight - segment.icon) / 2, segment.icon, segment.icon};
    canvas.draw(*entry.icon, rect, isHealthy(entry) ? 1 : segment.unhealthyIcon);
}

Color dotColor(const StripView::Entry& entry) {
    if (!isHealthy(entry)) return Color::white(segment.unhealthyDot);
    return Palette::level(entry.snapshot->dailyPercent.value_or(0));
}

void drawNameAndDot(Canvas& canvas, const StripView::Entry& entry, double x) {
    const TextLine name(std::string(entry.provider.rawValue()), segment.name);
    canvas.draw(name, {x, segment.nameY}, Color::white());

    const Color color = dotColor(entry);
    const Rect dot{x + name.width() + segment.dotGap, segment.dotY, segment.dot, segment.dot};
    StatusDot::draw(canvas, dot, color, segment.dotGlowRadius);
}

void drawGauges(Canvas& canvas, const UsageSnapshot& snapshot, double x) {
    const auto rect = [&](double y) {
        return Rect{x, y, segment.gauge.width, segment.gauge.height};
    };
    UsageGauge(UsageGauge::strip, "5h", snapshot.dailyPercent, snapshot.dailyResetAt,
               rect(segment.upperGaugeY))
        .draw(canvas);
    UsageGauge(UsageGauge::strip, "Wk", snapshot.weeklyPercent, std::nullopt,
               rect(segment.lowerGaugeY))
        .draw(canvas);
}

void drawMessage(Canvas& canvas, const std::optional<UsageSnapshot>& snapshot, double x,
                 double areaHeight) {
    const TextLine text(snapshot && snapshot->error ? *snapshot->error : "—", segment.message);
    canvas.draw(text, {x, (areaHeight - text.height()) / 2}, Palette::orange);
}

void drawSegment(Canvas& canvas, double x, const StripView::Entry& entry, double areaHeight) {
    drawIcon(canvas, entry, x, areaHeight);
    drawNameAndDot(canvas, entry, x + segment.textX);
    if (const auto tag = entry.snapshot ? ModelTag::of(*entry.snapshot, true) : std::nullopt) {
        tag->draw(canvas, ModelTag::strip, {x + segment.textX, segment.tagY});
    }
    if (isHealthy(entry)) {
        drawGauges(canvas, *entry.snapshot, x + segment.gaugeX);
    } else {
        drawMessage(canvas, entry.snapshot, x + segment.gaugeX, areaHeight);
    }
}

}  // namespace

void StripView::update(std::vector<Entry> shown) {
    entries = std::move(shown);
    const auto count = static_cast<double>(std::max<std::size_t>(1, entries.size()));
    wantedWidth = count * (segment.width + segment.gap) - segment.gap + 2 * segment.margin;
    updateGeometry();
    QWidget::update();
}

QSize StripView::sizeHint() const {
    return {static_cast<int>(wantedWidth), static_cast<int>(intrinsicHeight)};
}

void StripView::draw(Canvas& canvas, double areaHeight) const {
    double x = segment.margin;
    for (const Entry& entry : entries) {
        drawSegment(canvas, x, entry, areaHeight);
        x += segment.width;
        if (&entry == &entries.back()) break;
        drawDivider(canvas, x + segment.gap / 2, Palette::accent(entry.provider), areaHeight);
        x += segment.gap;
    }
}

void StripView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Canvas canvas(painter, height());
    draw(canvas, height());
}
