#pragma once

#include <optional>
#include <string>

#include "Drawing/Canvas.h"
#include "Model/UsageSnapshot.h"

/// Everything by which the gauges of two surfaces differ; lengths in points.
struct GaugeStyle {
    TextStyle labelFont;
    double labelAlpha;
    double percentSize;
    double absentAlpha;  ///< Of the percentage while there is none.
    double resetSize;
    double resetAlpha;
    double gap;             ///< After the percentage and after the reset text.
    double resetClearance;  ///< Between label and reset text, or the latter is left out.
    double barInset;        ///< After the label.
    double minBar;          ///< No bar is drawn unless it is longer.
    double barHeight;
    double trackAlpha;
    double minFill;
    double glowRadius;
    double rowHeight;     ///< From the short window's gauge down to the long one's.
    bool showsLongReset;  ///< Whether the long window's gauge has a reset text.
};

/// What one gauge shows, settled before it is painted.
class UsageGauge {
public:
    static const GaugeStyle strip;
    static const GaugeStyle panel;

    /// The gauges of both windows, the short one's in `upper`.
    static void drawBoth(Canvas& canvas, const GaugeStyle& style, const UsageSnapshot& snapshot,
                         Rect upper);

    /// Without `resetAt` there is no reset text.
    UsageGauge(const GaugeStyle& style, const std::string& label, std::optional<double> percent,
               std::optional<Instant> resetAt, Rect rect);

    void draw(Canvas& canvas) const;

    std::optional<Rect> track;  ///< Absent when the texts leave too little room.
    std::optional<Rect> fill;   ///< Absent without a track or a percentage.
    bool showsReset() const { return resetText.has_value(); }

private:
    void placeReset(Instant resetAt);
    void placeBar();

    const GaugeStyle& style;
    const Rect rect;
    const std::optional<double> percent;
    TextLine label;
    TextLine percentText;
    std::optional<TextLine> resetText;
    double used;  // of the rectangle's right side
};
