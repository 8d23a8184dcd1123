#include <QBuffer>
#include <cstdio>

#include "CLI/Previews.h"
#include "Drawing/Picture.h"
#include "PanelView/PanelView.h"
#include "Platform/WholeFile.h"
#include "Rendering/ProviderChip.h"
#include "Rendering/StatusSummary.h"
#include "StripView/StripView.h"

namespace {

constexpr double scale = 2;           // pixels per point
constexpr int quickCompression = 80;  // of Qt's "quality": a tenth larger, in a third of the time

constexpr struct {
    double padding = 8;  // left and right of the summary
    double height = 24;
    Color background = Color::grey(0.12);
} menuBar;

void writePNG(const QImage& image, const std::string& path) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    const bool encoded =
        buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG", quickCompression);
    if (encoded &&
        WholeFile::write(path, {bytes.constData(), static_cast<std::size_t>(bytes.size())},
                         WholeFile::Flush::no)) {
        std::printf("wrote %s\n", path.c_str());
    }
}

}  // namespace

void CLI::preview(const std::string& outPath) {
    std::vector<StripView::Entry> entries;
    for (const auto& [provider, snapshot] : collectAll())
        entries.push_back({provider, ProviderChip::picture(provider, scale), snapshot});
    StripView strip;
    strip.update(std::move(entries));
    const Size size{strip.measuredWidth(), StripView::intrinsicHeight};
    writePNG(Picture::of(size, scale,
                         [&](Canvas& canvas) {
                             canvas.fill({0, 0, size.width, size.height}, Color::black());
                             strip.draw(canvas, size.height);
                         }),
             outPath);
}

void CLI::panel(const std::string& outPath) {
    std::vector<PanelView::Entry> entries;
    for (const auto& [provider, snapshot] : collectAll())
        entries.push_back({provider, snapshot});
    PanelView panel;
    panel.update(std::move(entries));
    QImage image = Picture::blank({double(panel.width()), double(panel.height())}, scale);
    panel.render(&image);
    writePNG(image, outPath);
}

void CLI::menubar(const std::string& outPath) {
    StatusSummary::Snapshots snapshots;
    std::vector<Provider> providers;
    for (const auto& [provider, snapshot] : collectAll()) {
        snapshots.insert_or_assign(provider, snapshot);
        providers.push_back(provider);
    }
    const QImage summary = StatusSummary::render(snapshots, providers, scale);
    const QSizeF size = summary.deviceIndependentSize();
    const Size canvasSize{size.width() + 2 * menuBar.padding, menuBar.height};
    writePNG(Picture::of(
                 canvasSize, scale,
                 [&](Canvas& canvas) {
                     canvas.fill({0, 0, canvasSize.width, canvasSize.height}, menuBar.background);
                     canvas.draw(summary, {menuBar.padding, (menuBar.height - size.height()) / 2,
                                           size.width(), size.height()});
                 }),
             outPath);
}
