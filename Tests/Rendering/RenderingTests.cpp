#include <gtest/gtest.h>

#include <QPainter>
#include <cmath>

#include "Rendering/StatusSummary.h"
#include "Rendering/UsageGauge.h"
#include "Tests/Support/ScopedClock.h"

TEST(StatusSummary, TheHighestPercentageDecidesLengthAndColor) {
    constexpr Color green{0.22, 0.9, 0.45}, amber{1, 0.72, 0.2}, red{1, 0.3, 0.28};
    using Percent = std::optional<double>;
    const std::tuple<Percent, Percent, Percent, Color> cases[] = {{{}, {}, {}, Color::white(0.5)},
                                                                  {-5, {}, 0, green},
                                                                  {49.9, 10, 0.499, green},
                                                                  {{}, 50, 0.5, amber},
                                                                  {79.9, NAN, 0.799, amber},
                                                                  {30, 80, 0.8, red},
                                                                  {120, 30, 1, red}};
    for (const auto& [daily, weekly, fill, color] : cases) {
        UsageSnapshot snapshot(Provider::gemini);
        snapshot.dailyPercent = daily, snapshot.weeklyPercent = weekly;
        const auto piece =
            StatusSummary::pieces({{Provider::gemini, snapshot}}, {Provider::gemini})[0];
        EXPECT_EQ(piece.fill, fill);
        EXPECT_EQ(piece.color, color) << fill.value_or(-1);
    }
}

TEST(StatusSummary, TracksAndDotsShowOnLightAndDarkPanels) {
    for (const int ground : {255, 246, 51, 0}) {
        QImage seen(45, 22, QImage::Format_RGB32);
        seen.fill(qRgb(ground, ground, ground));
        QPainter(&seen).drawImage(0, 0, StatusSummary::renderForTray({}, {Provider::gemini}, 1));
        const int track = qRed(seen.pixel(26, 11)), dot = qRed(seen.pixel(32, 11));
        EXPECT_GE(std::abs(track - ground), 25) << ground;
        EXPECT_GE(std::abs(dot - track), 15) << ground;
    }
}

TEST(UsageGauge, LeavesOutWhatDoesNotFit) {
    const ScopedClock clock(1'800'000'000);
    const std::tuple<const GaugeStyle&, double, double> cases[] = {{UsageGauge::strip, 6, 15},
                                                                   {UsageGauge::panel, 10, 25}};
    for (const auto& [style, minBar, minBarBesideReset] : cases) {
        const auto gauge = [&, &style = style](double width, Instant ahead = 3600) {
            return UsageGauge(style, "5h", 42, Clock::now() + ahead, {100, 0, width, 16});
        };
        double width = 0;
        while (width < 500 && !gauge(width).track)
            width += 0.1;
        EXPECT_NEAR(gauge(width).track.value_or(Rect()).width, minBar, 0.11);
        while (width < 500 && !gauge(width).showsReset())
            width += 0.1;
        EXPECT_NEAR(gauge(width).track.value_or(Rect()).width, minBarBesideReset, 0.11);
        EXPECT_FALSE(gauge(width, 0).showsReset()) << "the time has come";
    }
}
