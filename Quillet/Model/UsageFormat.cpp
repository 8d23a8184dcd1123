#include "Model/UsageFormat.h"

#include <cmath>
#include <cstdint>

namespace {

constexpr const char* unknown = "—";
constexpr double int64Limit = 9223372036854775808.0;  // 2^63, the first double that is too large

}  // namespace

std::string UsageFormat::percentText(std::optional<double> percent) {
    if (!percent || !(std::abs(*percent) < int64Limit)) return unknown;
    return std::to_string(std::llround(*percent)) + "%";
}

std::string UsageFormat::resetText(Instant date) {
    const double seconds = date - Clock::now();
    if (!(seconds > 0)) return now;
    if (!(seconds < int64Limit)) return unknown;

    const auto minutes = static_cast<std::int64_t>(seconds / 60);
    const auto hours = minutes / 60;
    if (hours == 0) return std::to_string(minutes) + "m";
    if (hours < 24) return std::to_string(hours) + "h " + std::to_string(minutes % 60) + "m";
    return std::to_string(hours / 24) + "d " + std::to_string(hours % 24) + "h";
}
