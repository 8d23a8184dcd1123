#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QPainter>
#include <QRawFont>
#include <QtEndian>
#include <cmath>
#include <iostream>

#include "Drawing/Fonts.h"
#include "PanelView/FlatButton.h"
#include "PanelView/PanelView.h"
#include "Rendering/ProviderChip.h"
#include "Rendering/StatusSummary.h"
#include "StripView/StripView.h"
#include "Tests/Support/ScopedClock.h"

namespace {

using Entries = std::vector<PanelView::Entry>;
using Text = std::optional<std::string>;
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

/// The entries on everything that shows them. A provider is switched on if it has a snapshot.
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
    panel.isProviderVisible = [&](Provider p) { return snapshots.contains(p); };
    panel.update(entries);
    panel.show();
    panel.activateWindow();
    QCoreApplication::processEvents();
    panel.refreshButton->setFocus();
    panel.render(&image, {0, 40});
    QPainter painter(&image);
    painter.drawImage(410, 40, StatusSummary::render(snapshots, providers, 2));
    painter.drawImage(410, 70, StatusSummary::renderForTray(snapshots, providers, 2));
    painter.drawImage(410, 100, StatusSummary::renderSquare(snapshots, providers, 2));
    painter.drawImage(410, 130, StatusSummary::controlStripGlyph(snapshots, 2));
    return image;
}

void makeLettersTiny() {
    for (const QFileInfo& info : QDir(":/fonts").entryInfoList()) {
        QFile file(info.filePath());
        file.open(QIODevice::ReadOnly);
        QByteArray font = file.readAll();
        const auto head = qFromBigEndian<quint32>(font.constData() + font.indexOf("head") + 8);
        font[head + 18] = 0x7F;  // units per em
        QFontDatabase::addApplicationFontFromData(font);
    }
}

/// The points where a colour differs by more than the tolerance.
QPolygon differing(const QImage& one, const QImage& other, int tolerance) {
    QPolygon points;
    for (int i = 0; i < std::min(one.sizeInBytes(), other.sizeInBytes()); ++i)
        if (std::abs(one.constBits()[i] - other.constBits()[i]) > tolerance)
            points << QPoint(i / 4 % one.width(), i / 4 / one.width());
    return points;
}

void drawPoints(QImage& image, const QPolygon& points, QColor color, int size) {
    image.setDevicePixelRatio(1);
    QPainter painter(&image);
    painter.setPen(QPen(color, size, Qt::SolidLine, Qt::SquareCap));
    painter.drawPoints(points);
}

}  // namespace

/// `scripts/pictures --golden` makes them anew. Where the font is of another version, text and what
/// is placed by the width of text is not compared.
TEST(GoldenPictures, LookAsTheyDid) {
    setenv("TZ", "XXX-3", 1);
    tzset();
    const ScopedClock clock(1'800'011'100);
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
         {{opencode, {}},
          {gemini, {}},
          {claude, {}},
          entry(codex, false, {}, {}),
          entry(codex, false, {}, {}, {}, "Plus", "Login required")}},
        {"nobody", {}}};
    std::map<QString, QImage> pictures;
    for (const auto& [name, entries] : states)
        pictures[name] = drawn(entries);

    const QDir golden(FIXTURES "/pictures"), seen(QCoreApplication::applicationDirPath());
    const bool renews = qEnvironmentVariableIsSet("QUILLET_RENEW_PICTURES");
    const QString version =
        QRawFont::fromFont(Fonts::font({12})).fontTable("head").mid(4, 4).toHex();
    if (!renews && QImage(golden.filePath("nobody.png")).text("font") != version) makeLettersTiny();
    for (auto& [name, after] : pictures) {
        const QString file = golden.filePath(name + ".png");
        const QPolygon text = differing(after, drawn(states.at(name)), 0);
        QImage before = QImage(file).convertToFormat(after.format());
        const bool sameSize = before.size() == after.size();
        for (QImage* image : {&before, &after})
            drawPoints(*image, text, Qt::black, 7);
        const QPolygon changes = differing(before, after, 3);
        after.setText("font", version);
        EXPECT_TRUE(!renews || after.save(file));
        if (sameSize && changes.empty()) continue;
        drawPoints(before, changes, Qt::magenta, 1);
        before.save(seen.filePath(name + "-changes.png"));
        after.save(seen.filePath(name + ".png"));
        const QRect area = changes.boundingRect();
        std::cout << name.toStdString() << ".png changes between " << area.left() << ", "
                  << area.top() << " and " << area.right() << ", " << area.bottom() << "; see "
                  << seen.filePath(name + "-changes.png").toStdString() << '\n';
        EXPECT_TRUE(renews) << name.toStdString();
    }
}

TEST(GoldenPictures, HostileValuesTakeNoLongerThanOthers) {
    const auto time = [](double number, const std::string& word) {
        QElapsedTimer timer;
        timer.start();
        drawn({entry(codex, true, number, number, word, {}, {}, number),
               entry(claude, true, {}, {}, {}, word, word)});
        return timer.elapsed();
    };
    const auto first = time(50, "word");
    for (const auto& word :
         {std::string(), std::string("two\nlines\r\u2028\t"), std::string("שלום \u202E مرحبا"),
          std::string("Z\u0300\u0301\u0302\u0303\u0304\u0305\u0306"),
          std::string("👩‍👩‍👧‍👦🏳️‍🌈"),
          std::string("\xFF\xC3\xED\xA0\x80"), std::string(1, '\0'), std::string(10'000, 'W')})
        for (const double number : {double(NAN), double(INFINITY), -double(INFINITY), -5.0, 1e300})
            EXPECT_LT(time(number, word), 20 * first + 100) << word.substr(0, 99) << number;
}
