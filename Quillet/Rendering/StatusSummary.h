#pragma once

#include <QImage>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Drawing/Canvas.h"
#include "Model/UsageSnapshot.h"

/// The small pictures that stand for all providers at once: the status item's, wide and square, and
/// the control strip's. `scale` is in pixels per point.
namespace StatusSummary {

using Snapshots = std::map<Provider, UsageSnapshot>;

/// What the summary shows of one provider.
struct Piece {
    std::string initials;
    std::optional<double> fill = {};  ///< Of the level bar, 0 to 1; absent without any percentage.
    Color color = Color::white(0.5);  ///< Of the level bar.
    Color accent;                     ///< Of the badge.
    bool connected = false;
};

/// One per provider in the given order; a single grey placeholder for none. A provider without a
/// snapshot counts as not connected.
std::vector<Piece> pieces(const Snapshots& snapshots, const std::vector<Provider>& providers);

/// Badges and level bars side by side, 16 points high, transparent, for a dark ground.
QImage render(const Snapshots& snapshots, const std::vector<Provider>& providers, double scale);

/// The same for a tray: 22 points high, with tracks that show on light grounds too.
QImage renderForTray(const Snapshots& snapshots, const std::vector<Provider>& providers,
                     double scale);

/// For a square cell, 22 by 22 points: the same pieces in rows, an accent stub and the level bar of
/// each.
QImage renderSquare(const Snapshots& snapshots, const std::vector<Provider>& providers,
                    double scale);

/// Five glowing bars, 22 by 22 points, in the level colour of the highest percentage of all
/// snapshots.
QImage controlStripGlyph(const Snapshots& snapshots, double scale);

}  // namespace StatusSummary
