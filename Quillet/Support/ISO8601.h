#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Clock.h"

/// Internet date-times such as 2025-06-01T12:00:00Z.
namespace ISO8601 {

/// A full date-time with "Z" or a numeric offset; its seconds may have a fraction. Absent for any
/// other string.
std::optional<Instant> parse(std::string_view text);

/// The instant in UTC with whole seconds; absent outside the years 0 to 9999.
std::optional<std::string> format(Instant instant);

}  // namespace ISO8601
