// quillet-icons <file…>: draws the application's icon, a level bar per provider, into each file.
#include <QGuiApplication>
#include <QPainter>
#include <QSvgGenerator>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "Drawing/Canvas.h"
#include "Drawing/Picture.h"
#include "Rendering/Palette.h"

namespace {

constexpr double scalableSize = 128;

constexpr struct {
    Color left = Color::grey(0.19);
    Color right = Color::grey(0.09);
    double radius = 0.22;  // this and the next lengths: in parts of the icon's side
    double barHeight = 0.14;
    double gap = 0.06;
    double barInset = 0.13;
    double trackAlpha = 0.14;
    double lightening = 0.3;
    double fills[4] = {0.8, 0.5, 1, 0.3};  // of each bar, from the top
} icon;

/// A whole number of pixels, at least one: fractions blur small icons.
double pixels(double share, double side) {
    return std::max(1.0, std::round(share * side));
}

void drawBar(Canvas& canvas, Rect track, double fill, Color color) {
    const double radius = track.height / 2;
    canvas.fillRounded(track, radius, Color::white(icon.trackAlpha));
    track.width = std::round(track.width * fill);
    canvas.fillRoundedGradient(track, radius, color, color.lightened(icon.lightening));
}

void drawIcon(Canvas& canvas, double side) {
    const auto providers = Provider::allCases();
    const double count = providers.size();
    const double height = pixels(icon.barHeight, side);
    const double gap = pixels(icon.gap, side);
    const double inset = pixels(icon.barInset, side);
    const double total = count * height + (count - 1) * gap;

    canvas.fillRoundedGradient({0, 0, side, side}, icon.radius * side, icon.left, icon.right);
    double y = std::floor((side + total) / 2);
    for (const Provider provider : providers) {
        const double fill = icon.fills[provider % std::size(icon.fills)];
        drawBar(canvas, {inset, y -= height, side - 2 * inset, height}, fill,
                Palette::accent(provider));
        y -= gap;
    }
}

bool writePNG(const std::filesystem::path& path, int size) {
    const double side = size;
    return Picture::of({side, side}, 1, [&](Canvas& canvas) { drawIcon(canvas, side); })
        .save(QString::fromStdString(path.string()));
}

bool writeSVG(const std::filesystem::path& path) {
    QSvgGenerator generator;
    generator.setFileName(QString::fromStdString(path.string()));
    generator.setResolution(96);  // Qt computes the size in millimetres from it
    generator.setSize(QSize(int(scalableSize), int(scalableSize)));
    generator.setViewBox(QRectF(0, 0, scalableSize, scalableSize));
    generator.setTitle(QStringLiteral("Quillet"));
    generator.setDescription({});
    QPainter painter;
    if (!painter.begin(&generator)) return false;
    Canvas canvas(painter, scalableSize);
    drawIcon(canvas, scalableSize);
    return true;
}

/// The name is the size in pixels, "48.png", or ends in ".svg".
bool write(const std::filesystem::path& path) {
    return path.extension() == ".svg" ? writeSVG(path)
                                      : writePNG(path, std::atoi(path.stem().c_str()));
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (!write(argv[i]))
            return std::fprintf(stderr, "quillet-icons: could not write %s\n", argv[i]), 1;
    }
    return 0;
}
