#include <gtest/gtest.h>

#include "App/PointText.h"
#include "Windowing/Popover.h"
#include "Windowing/Screens.h"

TEST(PointText, ReadsBackWhatItWritesAndNothingElse) {
    for (const char* const text : {"{1480, -12.5}", "{0.1, 0.0000001}", "{-3000000000000000, 5}"})
        EXPECT_EQ(PointText::format(PointText::parse(text)), text);
    for (const char* const text : {"", "{", "{7,", "{7, 8", "{x, 8}", "{1e999, 8}", "{7,5, 8}"})
        EXPECT_EQ(PointText::format(PointText::parse(text)), "{0, 0}") << text;
}

TEST(Popover, HangsAtItsAnchorWithinTheScreen) {
    const std::tuple<QRect, int, QPoint> cases[] = {
        {{0, 0, 20, 22}, 404, {0, 30}},         {{1580, 0, 20, 30}, 404, {1208, 30}},
        {{700, 400, 40, 100}, 404, {524, 496}}, {{700, 450, 40, 46}, 404, {524, 496}},
        {{700, 450, 40, 47}, 404, {524, 46}},   {{0, 100, 10, 10}, 1000, {0, 30}}};
    for (const auto& [anchor, height, expected] : cases)
        EXPECT_EQ(Popover::place(anchor, {392, height}, {0, 30, 1600, 870}).topLeft(), expected);
}

TEST(Screens, LosesToAPanelOnlyWhatItCovers) {
    const QRect left(0, 0, 1200, 900), right(1200, 100, 1000, 700);  // of a desktop of 2200 by 900
    const std::tuple<Screens::Strut, QRect, QRect> cases[] = {
        {{.top = 28, .topFrom = 0, .topTo = 1199}, {0, 28, 1200, 872}, right},
        {{.top = 128, .topFrom = 1200, .topTo = 2199}, left, {1200, 128, 1000, 672}},
        {{.bottom = 30, .bottomFrom = 0, .bottomTo = 1199}, {0, 0, 1200, 870}, right},
        {{.left = 1240, .leftFrom = 100, .leftTo = 799}, left, {1240, 100, 960, 700}},
        {{.right = 1040, .rightFrom = 0, .rightTo = 899}, {0, 0, 1160, 900}, right},
    };
    for (const auto& [panel, restOfLeft, restOfRight] : cases) {
        EXPECT_EQ(Screens::without(panel, left, {2200, 900}), restOfLeft);
        EXPECT_EQ(Screens::without(panel, right, {2200, 900}), restOfRight);
    }
}
