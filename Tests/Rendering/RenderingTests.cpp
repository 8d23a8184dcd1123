#include <gtest/gtest.h>

#include <QApplication>
#include <QDebug>
#include <QFontDatabase>
#include <QPainter>
#include <QRawFont>
#include <cmath>

#include "Drawing/Fonts.h"
#include "PanelView/FlatButton.h"
#include "PanelView/PanelView.h"
#include "Rendering/Palette.h"
#include "Rendering/ProviderChip.h"
#include "Rendering/StatusSummary.h"
#include "Rendering/UsageGauge.h"
#include "StripView/StripView.h"
#include "Tests/Support/StoppedClock.h"

namespace {

using Entries = std::vector<PanelView::Entry>;
using Text = const std::optional<std::string>&;
using enum Provider::Case;

PanelView::Entry entry(Provider provider, bool connected, std::optional<double> daily,
                       std::optional<double> weekly, Text model = {}, Text plan = {},
                       Text error = {}, Instant resetAfter = 7500) {
    UsageSnapshot snapshot(provider);
    snapshot.connected = connected, snapshot.error = error;
    snapshot.dailyPercent = daily, snapshot.weeklyPercent = weekly;
    snapshot.dailyResetAt = snapshot.weeklyResetAt = Clock::now() + resetAfter;
    snapshot.planLabel = plan, snapshot.modelLabel = model;
    if (plan && model) snapshot.effortLabel = "High";
    return {provider, snapshot};
}

/// These entries on everything that shows them. With four of them every provider is switched on,
/// otherwise those with a snapshot.
QImage drawn(const Entries& entries) {
    StatusSummary::Snapshots snapshots;
    std::vector<Provider> providers;
    std::vector<StripView::Entry> segments;
    for (const auto& [provider, snapshot] : entries) {
        providers.push_back(provider);
        segments.push_back({provider, ProviderChip::picture(provider, 2), snapshot});
        if (snapshot) snapshots.emplace(provider, *snapshot);
    }
    QImage image(1860, 1020, QImage::Format_RGB32);
    image.fill(QColor(40, 44, 60));
    image.setDevicePixelRatio(2);
    StripView strip;
    strip.update(segments);
    strip.resize(strip.sizeHint());
    strip.render(&image, {}, {}, {});
    PanelView panel;
    panel.hasTouchBar = snapshots.size() == 4;
    panel.settings.surfaces.insert(DisplaySurface::touchBar);
    if (entries.size() != 4)
        panel.isProviderVisible = [&](Provider p) { return snapshots.contains(p); };
    panel.update(entries);
    panel.show();
    QCoreApplication::processEvents();
    panel.refreshButton->setFocus();
    panel.render(&image, {0, 40});
    QPainter painter(&image);
    painter.drawImage(410, 40, StatusSummary::render(snapshots, providers, 2));
    painter.fillRect(400, 66, 260, 30, Qt::white);
    painter.drawImage(410, 70, StatusSummary::renderForTray(snapshots, providers, 2));
    painter.drawImage(410, 100, StatusSummary::renderSquare(snapshots, providers, 2));
    painter.drawImage(410, 130, StatusSummary::controlStripGlyph(snapshots, 2));
    painter.end();
    image.setDevicePixelRatio(1);
    return image;
}

/// The points where a colour differs by more than the tolerance.
QPolygon differing(const QImage& one, const QImage& other, int tolerance) {
    QPolygon points;
    for (int i = 0; i < one.sizeInBytes(); ++i)
        if (std::abs(one.constBits()[i] - other.constBits()[i]) > tolerance)
            points << QPoint(i / 4 % one.width(), i / 4 / one.width());
    return points;
}

void drawPoints(QImage& image, const QPolygon& points, QColor color, int size) {
    QPainter painter(&image);
    painter.setPen(QPen(color, size, Qt::SolidLine, Qt::SquareCap));
    painter.drawPoints(points);
}

}  // namespace

/// `scripts/pictures --golden` makes them anew. With another version of the font, neither text nor
/// what its width moves is compared.
TEST(GoldenPictures, LookAsTheyDid) {
    qputenv("TZ", "XXX-3");
    qputenv("FONTCONFIG_SYSROOT", "/dev/null");  // where no font is
    stopClock(1'800'011'100);
    const PanelView::Entry absent{opencode, {}};
    const std::map<QString, Entries> states{
        {"ordinary",
         {entry(claude, true, 30, 85, "Opus", "Max"), entry(codex, true, 50, 49.9, {}, "plus é"),
          entry(gemini, true, 79.9, {}, "Gemini 2.5 Pro"),
          entry(opencode, true, {}, {}, {}, "zen")}},
        {"extreme",
         {entry(claude, true, 0, 100, std::string(40, 'm')), entry(codex, true, 80, -5),
          entry(gemini, true, {}, {}, {}, {}, "12 requests"),
          entry(opencode, false, 1e4, 0.5, "GPT-5", "Free", "stale", -1)}},
        {"signed-out",
         {absent, entry(gemini, false, {}, {}), entry(codex, false, {}, {}, {}, "Plus", "No login"),
          entry(claude, false, {}, {}), entry(codex, false, {}, {})}},
        {"nobody", {}}};
    std::map<QString, QImage> pictures;
    for (const auto& [name, entries] : states)
        pictures[name] = drawn(entries);

    const bool renews = qEnvironmentVariableIsSet("QUILLET_RENEW_PICTURES");
    const auto version = QRawFont::fromFont(Fonts::font({12})).fontTable("head").mid(4, 4).toHex();
    const bool hasFont = renews || QImage(FIXTURES "/pictures/nobody.png").text("font") == version;
    if (!hasFont) QFontDatabase::removeAllApplicationFonts();  // all text then looks different
    for (auto& [name, after] : pictures) {
        const QString file = FIXTURES "/pictures/" + name + ".png";
        const QPolygon text = hasFont ? QPolygon() : differing(after, drawn(states.at(name)), 0);
        QImage before(after.size(), after.format());
        before.fill(Qt::black);
        QPainter(&before).drawImage(0, 0, QImage(file));
        for (QImage* image : {&before, &after})
            drawPoints(*image, text, Qt::black, 15);  // may be 7 pixels elsewhere
        const QPolygon changes = differing(before, after, 3);
        if (changes.empty()) continue;
        drawPoints(before, changes, Qt::magenta, 1);
        const QString marked = QCoreApplication::applicationDirPath() + "/changes-" + name + ".png";
        before.save(marked);
        qInfo() << name << "changes in" << changes.boundingRect() << "as marked in" << marked;
        after.setText("font", version);
        EXPECT_TRUE(renews && after.save(file)) << name.toStdString();
    }
}

TEST(GoldenPictures, HostileValuesAreDrawnAtOnce) {
    const std::string words[] = {
        "", "two\nlines\r\u2028\t שלום \u202E مرحبا \xFF\xC3\xED\xA0\x80",
        std::string("\0Z\u0300\u0301\u0302\u0303 👩‍👩‍👧‍👦🏳️‍🌈", 50),
        QString("Wש").repeated(3'000'000).toStdString()};
    for (const auto& word : words)
        for (const double number : {NAN, INFINITY, -INFINITY, -5.0F, 3e38F}) {
            const Instant start = Clock::now();
            drawn({entry(codex, true, number, number, word, {}, {}, number),
                   entry(claude, true, {}, {}, {}, word, word)});
            EXPECT_LT(Clock::now() - start, 5) << word.substr(0, 99) << number;
        }
}

TEST(Palette, LevelsBeginAt50And80Percent) {
    constexpr Color green{0.22, 0.9, 0.45}, amber{1, 0.72, 0.2}, red{1, 0.3, 0.28};
    for (const auto& [at, color] : {std::pair(49.9, green), {50, amber}, {79.9, amber}, {80, red}})
        EXPECT_EQ(Palette::level(at), color) << at;
}

TEST(UsageGauge, LeavesOutWhatDoesNotFit) {
    for (const auto& [style, minBar, minBarBesideReset] :
         {std::tuple(&UsageGauge::strip, 6, 15), {&UsageGauge::panel, 10, 25}}) {
        std::map<bool, double> shortestBar;  // without and with a reset text
        for (int tenths = 5000; tenths > 0; --tenths) {
            const Rect place{100, 0, tenths / 10.0, 16};
            const UsageGauge gauge(*style, "5h", 42, Clock::now() + 7500, place);
            if (gauge.track) shortestBar[gauge.showsReset()] = gauge.track->width;
        }
        EXPECT_NEAR(shortestBar[false], minBar, 0.11);
        EXPECT_NEAR(shortestBar[true], minBarBesideReset, 0.11);
    }
}
