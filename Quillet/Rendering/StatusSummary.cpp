#include "Rendering/StatusSummary.h"

#include <algorithm>

#include "Drawing/Picture.h"
#include "Rendering/Palette.h"

namespace {

using StatusSummary::Piece;

constexpr struct {
    double height = 16;
    double margin = 2;  // at both ends
    double pieceWidth = 41;
    double gap = 9;
    Rect badge{0, 2.5, 16, 11};
    double badgeRadius = 3;
    double connectedAlpha = 0.95;
    double disconnectedAlpha = 0.4;
    TextStyle initials{7.5, FontWeight::heavy};
    double initialsAlpha = 0.82;
    Rect track{19, 5, 22, 6};
    double trackRadius = 3;
    double minBar = 6;
    double lightening = 0.5;
    double glowAlpha = 0.85;
    double glowRadius = 2.5;
    double dot = 3;
} summary;

struct TrackColors {
    Color track;
    Color dot;  ///< In the middle of a track without a level.
};
constexpr TrackColors onDark{Color::white(0.16), Color::white(0.3)};
constexpr TrackColors onLightOrDark{Color::grey(0.5, 0.5), Color::grey(0.5, 0.5)};  // panels

constexpr struct {
    double side = 22;
    double margin = 1;
    double gap = 1.5;   // between rows
    double maxRow = 6;  // height
    double stubWidth = 4;
    double barX = 6;
    double radius = 1.5;
} square;

constexpr struct {
    double side = 22;
    double barRadius = 1.3;
    double glowAlpha = 0.9;
    double glowRadius = 2.5;
    Rect bars[5] = {{1.5, 7, 2.6, 8},
                    {5.5, 5, 2.6, 12},
                    {9.5, 3, 2.6, 16},
                    {13.5, 5.5, 2.6, 11},
                    {17.5, 7.5, 2.6, 7}};
} glyph;

double badgeAlpha(const Piece& piece) {
    return piece.connected ? summary.connectedAlpha : summary.disconnectedAlpha;
}

void drawBar(Canvas& canvas, const Piece& piece, Rect track) {
    Rect bar = track;
    bar.width = std::max(track.width * *piece.fill, summary.minBar);
    canvas.glowRounded(bar, summary.trackRadius,
                       {piece.color.withAlpha(summary.glowAlpha), summary.glowRadius});
    canvas.fillRoundedGradient(bar, summary.trackRadius, piece.color,
                               piece.color.lightened(summary.lightening));
}

void drawPiece(Canvas& canvas, const Piece& piece, Point origin, const TrackColors& colors) {
    const Rect badge = summary.badge.shifted(origin.x, origin.y);
    canvas.fillRounded(badge, summary.badgeRadius, piece.accent.withAlpha(badgeAlpha(piece)));
    canvas.drawCentred(TextLine(piece.initials, summary.initials), badge.center(),
                       Color::black(summary.initialsAlpha));
    const Rect track = summary.track.shifted(origin.x, origin.y);
    canvas.fillRounded(track, summary.trackRadius, colors.track);
    if (piece.fill) {
        drawBar(canvas, piece, track);
    } else {
        canvas.fillEllipse(Rect::centred(track.center(), {summary.dot, summary.dot}), colors.dot);
    }
}

/// Badges and level bars side by side, in the middle of the height.
QImage drawWide(const std::vector<Piece>& shown, double height, const TrackColors& colors,
                double scale) {
    const double advance = summary.pieceWidth + summary.gap;
    const double width =
        advance * static_cast<double>(shown.size()) - summary.gap + 2 * summary.margin;
    return Picture::of({width, height}, scale, [&](Canvas& canvas) {
        Point origin{summary.margin, (height - summary.height) / 2};
        for (const Piece& piece : shown) {
            drawPiece(canvas, piece, origin, colors);
            origin.x += advance;
        }
    });
}

/// Without a glow, which would run into the rows above and below.
void drawSquareRow(Canvas& canvas, const Piece& piece, double y, double height) {
    const double radius = std::min(square.radius, height / 2);
    canvas.fillRounded({square.margin, y, square.stubWidth, height}, radius,
                       piece.accent.withAlpha(badgeAlpha(piece)));
    Rect bar{square.barX, y, square.side - square.margin - square.barX, height};
    canvas.fillRounded(bar, radius, onLightOrDark.track);
    if (!piece.fill) return;
    bar.width = std::max(bar.width * *piece.fill, 2 * radius);
    canvas.fillRounded(bar, radius, piece.color);
}

}  // namespace

std::vector<Piece> StatusSummary::pieces(const Snapshots& snapshots,
                                         const std::vector<Provider>& providers) {
    std::vector<Piece> pieces;
    for (const Provider provider : providers) {
        Piece piece{.initials = Palette::initials(provider), .accent = Palette::accent(provider)};
        if (const auto found = snapshots.find(provider); found != snapshots.end()) {
            piece.connected = found->second.connected;
            if (const auto percent = Palette::highestPercent(found->second)) {
                piece.fill = Palette::filledShare(*percent);
                piece.color = Palette::level(*percent);
            }
        }
        pieces.push_back(std::move(piece));
    }
    if (pieces.empty()) pieces.push_back({.initials = "AI", .accent = Color::grey(0.5)});
    return pieces;
}

QImage StatusSummary::render(const Snapshots& snapshots, const std::vector<Provider>& providers,
                             double scale) {
    return drawWide(pieces(snapshots, providers), summary.height, onDark, scale);
}

QImage StatusSummary::renderForTray(const Snapshots& snapshots,
                                    const std::vector<Provider>& providers, double scale) {
    return drawWide(pieces(snapshots, providers), square.side, onLightOrDark, scale);
}

QImage StatusSummary::renderSquare(const Snapshots& snapshots,
                                   const std::vector<Provider>& providers, double scale) {
    const auto shown = pieces(snapshots, providers);
    const auto count = static_cast<double>(shown.size());
    const double room = square.side - 2 * square.margin - square.gap * (count - 1);
    const double height = std::min(room / count, square.maxRow);
    const double total = height * count + square.gap * (count - 1);
    return Picture::of({square.side, square.side}, scale, [&](Canvas& canvas) {
        double y = (square.side + total) / 2;
        for (const Piece& piece : shown) {
            drawSquareRow(canvas, piece, y -= height, height);
            y -= square.gap;
        }
    });
}

QImage StatusSummary::controlStripGlyph(const Snapshots& snapshots, double scale) {
    double highest = 0;
    for (const auto& [provider, snapshot] : snapshots) {
        highest = std::max(highest, Palette::highestPercent(snapshot).value_or(0));
    }
    const Color color = Palette::level(highest);
    return Picture::of({glyph.side, glyph.side}, scale, [&](Canvas& canvas) {
        for (const Rect& bar : glyph.bars) {
            canvas.glowRounded(bar, glyph.barRadius,
                               {color.withAlpha(glyph.glowAlpha), glyph.glowRadius});
            canvas.fillRounded(bar, glyph.barRadius, color);
        }
    });
}
