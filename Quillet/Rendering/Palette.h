#pragma once

#include <optional>
#include <string>

#include "Drawing/Color.h"
#include "Model/UsageSnapshot.h"

/// The strings and colours by which every surface tells providers and levels apart.
namespace Palette {

inline constexpr Color orange{1.0, 0.62, 0.04};      ///< Of errors.
inline constexpr Color planGrey = Color::grey(0.6);  ///< Of a plan shown in a model's place.

std::string initials(Provider provider);  ///< Two letters.
Color accent(Provider provider);
std::string signInHint(Provider provider);

/// Green below 50 percent, amber below 80, red from there on.
Color level(double percent);

/// The larger of the snapshot's percentages that are present.
std::optional<double> highestPercent(const UsageSnapshot& snapshot);

/// The part of a bar that stands for `percent`, 0 to 1 whatever the percentage.
constexpr double filledShare(double percent) {
    return percent > 0 ? (percent < 100 ? percent / 100 : 1) : 0;
}

}  // namespace Palette
