// Prints what drawing costs in milliseconds: all that a refresh draws, the first time and from then
// on, and then a line for each part of it. This is a program of its own so that quillet-bench runs
// without Qt.
#include <QApplication>
#include <cstdio>
#include <cstdlib>

#include "Drawing/Picture.h"
#include "Measure.h"
#include "PanelView/PanelView.h"
#include "Rendering/ProviderChip.h"
#include "Rendering/StatusSummary.h"
#include "Rendering/UsageGauge.h"
#include "StripView/StripView.h"

namespace {

constexpr double scale = 2;  // pixels per point
constexpr int rounds = 101;

/// All four providers with everything that can be drawn.
StatusSummary::Snapshots makeSnapshots() {
    StatusSummary::Snapshots snapshots;
    double percent = 23;
    for (const Provider provider : Provider::allCases()) {
        UsageSnapshot snapshot(provider);
        snapshot.connected = true;
        snapshot.modelLabel = "Opus 4.7";
        snapshot.effortLabel = "High";
        snapshot.dailyPercent = percent;
        snapshot.weeklyPercent = percent + 8;
        snapshot.dailyResetAt = Clock::now() + 11130;
        snapshot.weeklyResetAt = Clock::now() + 187230;
        snapshots.emplace(provider, snapshot);
        percent += 23;
    }
    return snapshots;
}

void render(QWidget& widget) {
    QImage image = Picture::blank({double(widget.width()), double(widget.height())}, scale);
    widget.render(&image);
}

class Surfaces {
public:
    void drawStrip() {
        std::vector<StripView::Entry> entries;
        for (const auto& [provider, snapshot] : snapshots)
            entries.push_back({provider, ProviderChip::picture(provider, scale), snapshot});
        strip.update(std::move(entries));
        strip.resize(strip.sizeHint());
        render(strip);
    }

    void drawSummary() const { StatusSummary::render(snapshots, providers, scale); }
    void drawGlyph() const { StatusSummary::controlStripGlyph(snapshots, scale); }

    void drawPanel() {
        std::vector<PanelView::Entry> entries;
        for (const auto& [provider, snapshot] : snapshots)
            entries.push_back({provider, snapshot});
        panel.update(std::move(entries));
        render(panel);
    }

    void drawAll() {
        drawStrip();  // in the floating bar
        drawStrip();  // on the Touch Bar
        drawSummary();
        drawGlyph();
        drawPanel();
    }

private:
    const StatusSummary::Snapshots snapshots = makeSnapshots();
    const std::array<Provider, 4> all = Provider::allCases();
    const std::vector<Provider> providers{all.begin(), all.end()};
    StripView strip;
    PanelView panel;
};

void printPart(const char* name, const Measure::Work& work) {
    std::printf("%-32s %8.3f ms\n", name, Measure::median(rounds, work));
}

/// One call of Canvas, on a picture made before.
void printCall(const char* name, const std::function<void(Canvas&)>& call) {
    Picture::of({400, 40}, scale, [&](Canvas& canvas) { printPart(name, [&] { call(canvas); }); });
}

void printCalls() {
    constexpr Rect bar{10, 18, 80, 5};
    const Glow glow{Color::white(0.9), 5};
    const TextStyle style{11, FontWeight::bold, 0, true};
    const TextLine line("Opus 4.7 · High", style);
    const Instant reset = Clock::now() + 11130;
    printPart("a text: layout", [&] { TextLine("Opus 4.7 · High", style); });
    printCall("a text: drawing", [&](Canvas& canvas) {
        canvas.draw(line, {10, 10}, Color::white());
    });
    printCall("a dot's glow", [&](Canvas& canvas) { canvas.glowRounded({20, 18, 6, 6}, 3, glow); });
    printCall("a bar's glow", [&](Canvas& canvas) { canvas.glowRounded(bar, 2.5, glow); });
    printCall("a bar with gradient", [&](Canvas& canvas) {
        canvas.fillRoundedGradient(bar, 2.5, Color::black(), Color::white());
    });
    printCall("a gauge", [&](Canvas& canvas) {
        UsageGauge(UsageGauge::panel, "5h", 42, reset, {10, 10, 188, 16}).draw(canvas);
    });
}

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const QApplication application(argc, argv);
    Surfaces surfaces;
    const auto all = [&] { surfaces.drawAll(); };
    std::printf("%.3f %.3f\n", Measure::milliseconds(all), Measure::median(rounds, all));
    printPart("the strip", [&] { surfaces.drawStrip(); });
    printPart("its four chips", [&] {
        for (const Provider provider : Provider::allCases())
            ProviderChip::picture(provider, scale);
    });
    printPart("the summary", [&] { surfaces.drawSummary(); });
    printPart("the glyph", [&] { surfaces.drawGlyph(); });
    printPart("the panel", [&] { surfaces.drawPanel(); });
    printCalls();
}
