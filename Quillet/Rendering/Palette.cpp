#include "Rendering/Palette.h"

#include <algorithm>
#include <cmath>

std::string Palette::initials(Provider provider) {
    switch (provider) {
    case Provider::claude:
        return "CL";
    case Provider::codex:
        return "CX";
    case Provider::gemini:
        return "GM";
    case Provider::opencode:
        return "OC";
    }
    return {};
}

Color Palette::accent(Provider provider) {
    switch (provider) {
    case Provider::claude:
        return {0.85, 0.47, 0.34};
    case Provider::codex:
        return {0.35, 0.78, 0.98};
    case Provider::gemini:
        return {0.55, 0.55, 0.98};
    case Provider::opencode:
        return {0.45, 0.85, 0.55};
    }
    return {};
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
