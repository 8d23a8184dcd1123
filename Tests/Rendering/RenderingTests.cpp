#include <QPainter>
#include <cmath>

#include "Rendering/ProviderChip.h"
#include "Rendering/StatusSummary.h"
#include "Rendering/UsageGauge.h"
#include "Tests/Support/Drawing.h"
#include "Tests/Support/HostileValues.h"
#include "Tests/Support/ScopedClock.h"

TEST(StatusSummary, ShowsEachProvidersHighestPercentage) {
    for (const auto& picture : pictures("summary")) {
        SCOPED_TRACE(picture["what"]);
        StatusSummary::Snapshots snapshots;
        std::vector<Provider> providers;
        for (const auto& row : picture["entries"]) {
            providers.push_back(providerOf(row));
            if (const auto snapshot = snapshotOf(row))
                snapshots.emplace(providerOf(row), *snapshot);
        }
        auto pieces = json::array();
        for (const auto& [initials, fill, color, accent, connected] :
             StatusSummary::pieces(snapshots, providers))
            pieces.push_back({initials,
                              fill ? json(*fill) : json(),
                              {color.red, color.green, color.blue, color.alpha},
                              connected});
        EXPECT_EQ(pieces, picture["pieces"]);
        const auto image = StatusSummary::render(snapshots, providers, 2),
                   glyph = StatusSummary::controlStripGlyph(snapshots, 2);
        EXPECT_EQ(image.deviceIndependentSize(), QSizeF(picture["size"][0], picture["size"][1]));
        expectPicture(image, picture["drawn"]);
        EXPECT_EQ(glyph.deviceIndependentSize(), QSizeF(22, 22));
        auto bars = pictures("glyph")[0]["drawn"];
        for (auto& bar : bars)
            bar["color"] = picture["glyph"];
        expectPicture(glyph, bars);
    }
    expectHostileValuesDrawnAtOnce([](const UsageSnapshot& snapshot) {
        const StatusSummary::Snapshots snapshots{{snapshot.provider, snapshot}};
        StatusSummary::render(snapshots, {snapshot.provider}, 2),
            StatusSummary::controlStripGlyph(snapshots, 2);
        const auto fill = StatusSummary::pieces(snapshots, {snapshot.provider})[0].fill.value_or(0);
        EXPECT_TRUE(fill >= 0 && fill <= 1) << fill;
    });
}

/// Of two greys, as people see them: 1 for the same.
double contrast(int one, int other) {
    const auto luminance = [](int grey) {
        return std::pow((grey / 255.0 + 0.055) / 1.055, 2.4) + 0.05;
    };
    return luminance(std::max(one, other)) / luminance(std::min(one, other));
}

TEST(StatusSummary, TracksAndDotsShowOnLightAndDarkPanels) {
    for (const int ground : {255, 246, 51, 0}) {
        const QImage tray = StatusSummary::renderForTray({}, {Provider::gemini}, 2);
        QImage seen(tray.size(), QImage::Format_RGB32);
        seen.fill(qRgb(ground, ground, ground));
        seen.setDevicePixelRatio(tray.devicePixelRatio());
        QPainter(&seen).drawImage(0, 0, tray);
        const int track = qRed(seen.pixel(2 * 26, 2 * 11)), dot = qRed(seen.pixel(2 * 32, 2 * 11));
        EXPECT_GE(contrast(track, ground), 1.3) << ground;
        EXPECT_GE(contrast(dot, track), 1.3) << ground;
    }
}

TEST(ProviderChip, ScalesWithItsRectangle) {
    for (const auto& picture : pictures("chips")) {
        SCOPED_TRACE(picture["what"]);
        const Rect rect{0, 0, picture["size"][0], picture["size"][1]};
        const auto draw = [&](Canvas& canvas) {
            ProviderChip::draw(canvas, providerOf(picture), rect, picture["dimmed"]);
        };
        expectPicture(Picture::of({rect.width, rect.height}, 2, draw), picture["drawn"]);
    }
}

TEST(UsageGauge, LeavesOutWhatDoesNotFit) {
    const ScopedClock clock(1'800'000'000);
    const struct {
        const GaugeStyle& style;
        double labelSize, percentSize, resetSize, gap, clearance, inset, least;
    } cases[] = {{UsageGauge::strip, 8.5, 10, 7.5, 6, 26, 5, 6},
                 {UsageGauge::panel, 9.5, 11, 8, 8, 40, 7, 10}};
    for (const auto& c : cases) {
        const double label = TextLine("5h", {c.labelSize, FontWeight::medium}).width();
        const double percent =
            TextLine("42%", {c.percentSize, FontWeight::bold, 0, true}).width() + c.gap;
        const double reset =
            TextLine("↻ 1h 0m", {c.resetSize, FontWeight::regular, 0, true}).width();
        const auto gauge = [&](double width, double ahead) {
            return UsageGauge(c.style, "5h", 42, Clock::now() + ahead, {100, 0, width, 16});
        };
        const double bar = label + c.inset + c.least + percent,
                     all = label + c.clearance + reset + percent;
        EXPECT_FALSE(gauge(bar - 0.1, -1).track || gauge(bar - 0.1, -1).fill);
        EXPECT_NEAR(gauge(bar + 0.1, -1).track.value_or(Rect()).width, c.least + 0.1, 1e-6);
        EXPECT_FALSE(gauge(all - 0.1, 3600).showsReset() || gauge(500, 0).showsReset());
        EXPECT_TRUE(gauge(all + 0.1, 3600).showsReset());
        EXPECT_NEAR(gauge(all - 0.1, 3600).track->maxX() - gauge(all + 0.1, 3600).track->maxX(),
                    reset + c.gap - 0.2, 1e-6);
    }
}
