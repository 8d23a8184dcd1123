#include <gtest/gtest.h>

#include "Windowing/Screens.h"

TEST(Screens, LosesToAPanelOnlyWhatItCovers) {
    const QRect left(0, 0, 1200, 900), right(1200, 100, 1000, 700);  // of a desktop of 2200 by 900
    const std::tuple<Screens::Strut, QRect, QRect> cases[] = {
        {{.top = 128, .topFrom = 1200, .topTo = 2199}, left, {1200, 128, 1000, 672}},
        {{.left = 1240, .leftFrom = 100, .leftTo = 799}, left, {1240, 100, 960, 700}},
        {{.right = 1040, .bottom = 30, .rightTo = 899, .bottomTo = 1199}, {0, 0, 1160, 870}, right},
    };
    for (const auto& [panel, restOfLeft, restOfRight] : cases) {
        EXPECT_EQ(Screens::without(panel, left, {2200, 900}), restOfLeft);
        EXPECT_EQ(Screens::without(panel, right, {2200, 900}), restOfRight);
    }
}
