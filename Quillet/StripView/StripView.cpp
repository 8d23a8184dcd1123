#include "StripView/StripView.h"

#include <QPainter>
#include <algorithm>

#include "Rendering/ModelTag.h"
#include "Rendering/Palette.h"
#include "Rendering/ProviderName.h"
#include "Rendering/UsageGauge.h"

namespace {

constexpr struct {
    double width = 216;
    double gap = 14;
    double margin = 8;  // of the strip, left and right
    double icon = 22;
    double unhealthyIcon = 0.5;  // opacity
    double textX = 28;
    ProviderName name{
        .font = {11, FontWeight::semibold}, .dotGap = 4, .dotRise = 3.5, .dot = 5, .glowRadius = 3};
    double nameY = 15.5;
    double tagY = 1.5;
    double unhealthyDot = 0.3;
    Rect gauge{102, 15.5, 114, 13};  // of the upper one
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

void drawMessage(Canvas& canvas, const std::optional<UsageSnapshot>& snapshot, double x,
                 double areaHeight) {
    const TextLine text(snapshot && snapshot->error ? *snapshot->error : "—", segment.message);
    canvas.draw(text, {x, (areaHeight - text.height()) / 2}, Palette::orange);
}

void drawSegment(Canvas& canvas, double x, const StripView::Entry& entry, double areaHeight) {
    drawIcon(canvas, entry, x, areaHeight);
    segment.name.draw(canvas, entry.provider, {x + segment.textX, segment.nameY}, Color::white(),
                      dotColor(entry));
    if (const auto tag = entry.snapshot ? ModelTag::of(*entry.snapshot, true) : std::nullopt) {
        tag->draw(canvas, ModelTag::strip, {x + segment.textX, segment.tagY});
    }
    if (isHealthy(entry)) {
        UsageGauge::drawBoth(canvas, UsageGauge::strip, *entry.snapshot,
                             segment.gauge.shifted(x, 0));
    } else {
        drawMessage(canvas, entry.snapshot, x + segment.gauge.x, areaHeight);
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
