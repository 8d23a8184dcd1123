#include <numbers>

#include "Tests/Support/Drawing.h"

namespace {

constexpr Rect shape{10, 6, 20, 12};
constexpr Color red{1, 0, 0};

QImage drawn(const std::function<void(Canvas&)>& paint) {
    return Picture::of({60, 30}, 2, paint);
}

double alphaAt(const QImage& image, double x, double y) {
    return image.pixelColor(int(2 * x), image.height() - 1 - int(2 * y)).alphaF();
}

/// In square points.
double coverage(const QImage& image, Rect area = {0, 0, 60, 30}) {
    double sum = 0;
    for (int row = 0; row < 2 * area.height; ++row)
        for (int column = 0; column < 2 * area.width; ++column)
            sum += alphaAt(image, area.x + column / 2.0 + 0.25, area.y + row / 2.0 + 0.25) / 4;
    return sum;
}

}  // namespace

TEST(Canvas, ShapesFillTheirRectangleAndNothingElse) {
    QImage icon(24, 24, QImage::Format_ARGB32_Premultiplied);
    icon.fill(Qt::blue);
    constexpr double pi = std::numbers::pi, corners = 4 - pi;
    const std::tuple<const char*, double, Rect, std::function<void(Canvas&)>> cases[] = {
        {"square", 240, shape, [](Canvas& c) { c.fill(shape, red); }},
        {"faint", 120, shape, [](Canvas& c) { c.fill(shape, red.withAlpha(0.5)); }},
        {"rounded", 240 - corners * 16, shape, [](Canvas& c) { c.fillRounded(shape, 4, red); }},
        {"graded", (240 - corners) / 2, shape,
         [](Canvas& c) {
             c.fillRoundedGradient(shape, 1, red.withAlpha(0.1), red.withAlpha(0.9));
         }},
        {"ellipse", pi * 60, shape, [](Canvas& c) { c.fillEllipse(shape, red); }},
        {"line", 64 - 2 * corners, shape.inset(-0.5),
         [](Canvas& c) { c.strokeRounded(shape, 1, red, 1); }},
        {"upright", 120, shape,
         [](Canvas& c) {
             c.fillVerticalGradient(shape,
                                    {red.withAlpha(0.1), red.withAlpha(0.5), red.withAlpha(0.9)});
         }},
        {"picture", 60, shape, [&](Canvas& c) { c.draw(icon, shape, 0.25); }}};
    for (const auto& [what, area, box, paint] : cases) {
        const auto image = drawn(paint);
        const double edges[] = {
            alphaAt(image, box.x, box.midY()), alphaAt(image, box.maxX() - 0.5, box.midY()),
            alphaAt(image, box.midX(), box.y), alphaAt(image, box.midX(), box.maxY() - 0.5)};
        EXPECT_NEAR(coverage(image), area, area / 50) << what;
        EXPECT_NEAR(coverage(image, box), coverage(image), 1e-9) << what << " spills";
        EXPECT_GT(*std::ranges::min_element(edges), 0.08) << what;
        EXPECT_EQ(edges[1] > edges[0] + 0.5, what == std::string("graded"));
        EXPECT_EQ(edges[3] > edges[2] + 0.5, what == std::string("upright"));
    }
}

TEST(Glow, IsTheGaussianBlurOfItsShape) {
    for (const double blur : {2.5, 4.5}) {
        const auto within = [&](double at, double from, double to) {
            const double unit = blur / 2 * std::numbers::sqrt2;
            return (std::erf((to - at) / unit) - std::erf((from - at) / unit)) / 2;
        };
        for (const double width : {6.0, 40.0}) {  // the longer one is blurred as a tile
            const Rect bar{10, 13, width, 4};
            const auto image = drawn([&](Canvas& c) {
                c.glowRounded(bar, 0, {red.withAlpha(0.9), blur});
            });
            for (int i = 0; i < 39 * 11; ++i) {
                const int column = i % 39, row = i / 39;
                const double x = 1.25 + 1.5 * column, y = 7.25 + 1.5 * row;
                EXPECT_NEAR(alphaAt(image, x, y),
                            0.9 * within(x, 10, 10 + width) * within(y, 13, 17), 0.015)
                    << x << ", " << y;
            }
        }
    }
    EXPECT_EQ(coverage(drawn([](Canvas& c) { c.glowRounded(shape, 3, {red, 0}); })), 0);
}

TEST(TextLine, InkStaysInTheMeasuredBox) {
    double lighter = 0;
    for (const int weight : {400, 500, 600, 700, 800}) {
        const TextLine text("Hg08%", {10, FontWeight(weight)});
        const auto image = drawn([&](Canvas& c) { c.draw(text, {12, 8}, red); });
        EXPECT_NEAR(coverage(image, {11.5, 8, text.width() + 1, text.height()}), coverage(image),
                    1e-9);
        EXPECT_GT(coverage(image, {9.5 + text.width(), 8, 2.5, text.height()}), 0) << "ends early";
        EXPECT_GT(coverage(image), std::exchange(lighter, coverage(image)))
            << "no heavier than the weight before";
        EXPECT_EQ(drawn([&](Canvas& c) {
                      c.drawCentred(text, {12 + text.width() / 2, 8 + text.height() / 2}, red);
                  }),
                  image);
        const Rect clip{13, 9, 10, 6};
        EXPECT_NEAR(coverage(drawn([&](Canvas& c) {
                        c.drawClipped(text, {12, 8}, red, clip, 0);
                    })),
                    coverage(image, clip), 0.01);
    }
}

TEST(TextLine, WidthFollowsKernDigitsAndSizeAlone) {
    const auto width = [](const std::string& text, double size, double kern = 0,
                          bool tabular = false) {
        return TextLine(text, {size, FontWeight::regular, kern, tabular}).width();
    };
    EXPECT_NEAR(width("QUILLET", 12.5, 2) - width("QUILLET", 12.5), 14, 0.01)
        << "after each character";
    EXPECT_NEAR(width("AV1%", 20), 2 * width("AV1%", 10), 0.1);
    for (const char digit : std::string("023456789"))
        EXPECT_NEAR(width(std::string(4, digit), 10, 0, true), width("1111", 10, 0, true), 0.01)
            << digit;
    EXPECT_LT(width("1111", 10), width("0000", 10)) << "digits of their own widths otherwise";
    EXPECT_EQ(width(std::string(1 << 20, 'm'), 10), width(std::string(1000, 'm'), 10))
        << "takes seconds";
    EXPECT_EQ(TextLine("", {10}).height(), TextLine("Hg", {10}).height());
}
