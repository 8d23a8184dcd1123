#include "Rendering/Palette.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr struct {
    const char* initials;
    Color accent;
    const char* signInHint;
} providers[] = {
    {"CL", {0.85, 0.47, 0.34}, "Run `claude` and sign in"},
    {"CX", {0.35, 0.78, 0.98}, "Run `codex` and sign in"},
    {"GM", {0.55, 0.55, 0.98}, "Run `gemini` and sign in"},
    {"OC", {0.45, 0.85, 0.55}, "Run `opencode auth login`"},
};
static_assert(std::size(providers) == Provider::allCases().size());

}  // namespace

std::string Palette::initials(Provider provider) {
    return providers[provider].initials;
}

Color Palette::accent(Provider provider) {
    return providers[provider].accent;
}

std::string Palette::signInHint(Provider provider) {
    return providers[provider].signInHint;
}

Color Palette::level(double percent) {
    if (percent < 50) return {0.22, 0.9, 0.45};
    if (percent < 80) return {1.0, 0.72, 0.2};
    return {1.0, 0.3, 0.28};
}

std::optional<double> Palette::highestPercent(const UsageSnapshot& snapshot) {
    const auto number = [](std::optional<double> percent) {
        return percent && std::isnan(*percent) ? std::nullopt : percent;
    };
    // Absent is less than any value.
    return std::max(number(snapshot.dailyPercent), number(snapshot.weeklyPercent));
}
