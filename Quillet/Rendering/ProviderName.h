#pragma once

#include "Drawing/Canvas.h"
#include "Model/Provider.h"

/// A provider's name with the small glowing light of its status behind it.
struct ProviderName {
    TextStyle font;
    double dotGap;   ///< After the name.
    double dotRise;  ///< Above the bottom of the name.
    double dot;      ///< Its diameter.
    double glowRadius;

    /// With the bottom-left corner of the name at `origin`.
    void draw(Canvas& canvas, Provider provider, Point origin, Color nameColor,
              Color dotColor) const;
};
