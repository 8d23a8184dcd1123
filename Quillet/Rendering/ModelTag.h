#pragma once

#include <optional>
#include <string>

#include "Drawing/Canvas.h"
#include "Model/UsageSnapshot.h"

/// Everything by which the tags of two surfaces differ; lengths in points.
struct TagStyle {
    TextStyle font;
    double height;
    double padding;
    std::optional<double> maxWidth;  ///< Longer strings are cut off.
    double radius;
    double fillAlpha;
    double lineAlpha;
};

/// A small outlined label with the model and effort in use or, in their place, the plan.
struct ModelTag {
    static const TagStyle strip;
    static const TagStyle panel;

    std::string text;
    Color base;

    /// Absent if there is nothing to show. `showsPlan` allows the plan in the model's place.
    static std::optional<ModelTag> of(const UsageSnapshot& snapshot, bool showsPlan);

    /// With its bottom-left corner at `origin`.
    void draw(Canvas& canvas, const TagStyle& style, Point origin) const;
};
