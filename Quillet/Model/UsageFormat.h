#pragma once

#include <optional>
#include <string>

#include "Platform/Clock.h"

/// The short texts that every surface shows for a usage window.
namespace UsageFormat {

inline constexpr const char* shortWindow = "5h";
inline constexpr const char* longWindow = "Wk";
inline constexpr const char* now = "now";  ///< The reset text of an instant that has come.

/// Whole percent, halves away from zero: "42%". "—" when absent, not finite or beyond 64 bits.
std::string percentText(std::optional<double> percent);

/// Time left until `date`: "45m", "3h 5m", "2d 4h", or `now` once it has come; "—" for one too far
/// ahead to count.
std::string resetText(Instant date);

}  // namespace UsageFormat
