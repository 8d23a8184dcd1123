#include "PanelView/PanelView.h"

#include <QDateTime>
#include <QPainter>
#include <algorithm>

#include "PanelView/StatusMessage.h"
#include "Platform/Clock.h"
#include "Rendering/ModelTag.h"
#include "Rendering/Palette.h"
#include "Rendering/ProviderChip.h"
#include "Rendering/ProviderName.h"
#include "Rendering/UsageGauge.h"

namespace {

constexpr struct {
    double width = 392;
    double header = 36;
    double row = 64;
    double bottom = 112;
    double margin = 16;
    Color background{0.043, 0.043, 0.07};
    double hairline = 0.5;
    double dividerAlpha = 0.07;
    double controlsDividerY = 110;
} panel;

constexpr struct {
    TextStyle title{12.5, FontWeight::bold, 2};
    double titleDrop = 25;  // below the top edge
    TextStyle time{9.5, FontWeight::regular};
    double timeDrop = 23;
    double timeAlpha = 0.35;
} header;

constexpr struct {
    TextStyle font{8.5, FontWeight::semibold, 1.5};
    double alpha = 0.4;
    double showY = 84;
    double whereY = 45;
} sectionLabel;

constexpr struct {
    TextStyle font{9, FontWeight::semibold, 1.5};
    double y = 11;
    Color color{0.45, 0.75, 0.95, 0.7};
} brand;

// Heights count from the row's middle.
constexpr struct {
    double separatorAlpha = 0.05;
    double chip = 30;
    double textX = 56;
    ProviderName name{
        .font = {13, FontWeight::semibold}, .dotGap = 6, .dotRise = 5, .dot = 6, .glowRadius = 3.5};
    double nameY = 4;
    double disconnectedName = 0.6;
    double disconnectedDot = 0.25;
    double tagY = -14;
    Rect gauge{188, 2, 188, 16};  // of the upper one
    TextStyle message{10.5, FontWeight::regular};
    double messageY = -6;
} row;

bool isConnected(const PanelView::Entry& entry) {
    return entry.snapshot && entry.snapshot->connected;
}

Color dotColor(const PanelView::Entry& entry) {
    if (!isConnected(entry)) return Color::white(row.disconnectedDot);
    return Palette::level(Palette::highestPercent(*entry.snapshot).value_or(0));
}

void drawSectionLabel(Canvas& canvas, const char* text, double y) {
    canvas.draw(TextLine(text, sectionLabel.font), {panel.margin, y},
                Color::white(sectionLabel.alpha));
}

void drawFooterBrand(Canvas& canvas) {
    canvas.draw(TextLine("BY ZENDRIK", brand.font), {panel.margin, brand.y}, brand.color);
}

void drawSectionDivider(Canvas& canvas, double y) {
    canvas.fill({panel.margin, y, panel.width - 2 * panel.margin, panel.hairline},
                Color::white(panel.dividerAlpha));
}

void drawHeader(Canvas& canvas, double height) {
    canvas.draw(TextLine("QUILLET", header.title), {panel.margin, height - header.titleDrop},
                Color::white());
    const auto now = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(Clock::now()));
    const TextLine time("updated " + now.toString(QStringLiteral("HH:mm")).toStdString(),
                        header.time);
    canvas.draw(time, {panel.width - panel.margin - time.width(), height - header.timeDrop},
                Color::white(header.timeAlpha));
    drawSectionDivider(canvas, height - panel.header);
}

void drawRow(Canvas& canvas, double y, const PanelView::Entry& entry) {
    const double midY = y + panel.row / 2;
    const bool connected = isConnected(entry);
    canvas.fill({panel.margin, y + panel.row - panel.hairline, panel.width - 2 * panel.margin,
                 panel.hairline},
                Color::white(row.separatorAlpha));
    ProviderChip::draw(canvas, entry.provider,
                       {panel.margin, midY - row.chip / 2, row.chip, row.chip}, !connected);
    row.name.draw(canvas, entry.provider, {row.textX, midY + row.nameY},
                  Color::white(connected ? 1 : row.disconnectedName), dotColor(entry));
    if (const auto tag = entry.snapshot ? ModelTag::of(*entry.snapshot, connected) : std::nullopt) {
        tag->draw(canvas, ModelTag::panel, {row.textX, midY + row.tagY});
    }
    if (entry.snapshot && Palette::highestPercent(*entry.snapshot)) {
        UsageGauge::drawBoth(canvas, UsageGauge::panel, *entry.snapshot,
                             row.gauge.shifted(0, midY));
    } else {
        const StatusMessage message = StatusMessage::of(entry.provider, entry.snapshot);
        canvas.draw(TextLine(message.text, row.message), {row.gauge.x, midY + row.messageY},
                    message.color);
    }
}

}  // namespace

void PanelView::update(std::vector<Entry> shown) {
    entries = std::move(shown);
    if (providerButtons.empty()) rebuildProviderButtons();
    const auto rows = static_cast<double>(std::max<std::size_t>(1, entries.size()));
    setFixedSize(static_cast<int>(panel.width),
                 static_cast<int>(panel.header + panel.row * rows + panel.bottom));
    syncControlStates();
    layoutControls();
    QWidget::update();
}

void PanelView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Canvas canvas(painter, height());
    canvas.fill({0, 0, double(width()), double(height())}, panel.background);
    drawHeader(canvas, height());
    double y = height() - panel.header;
    for (const Entry& entry : entries)
        drawRow(canvas, y -= panel.row, entry);
    drawSectionDivider(canvas, panel.controlsDividerY);
    drawSectionLabel(canvas, "SHOW", sectionLabel.showY);
    drawSectionLabel(canvas, "WHERE", sectionLabel.whereY);
    drawFooterBrand(canvas);
}
