#pragma once

/// A colour by its RGB components and alpha, each 0 to 1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static constexpr Color grey(double level, double alpha = 1) {
        return {level, level, level, alpha};
    }
    static constexpr Color white(double alpha = 1) { return grey(1, alpha); }
    static constexpr Color black(double alpha = 1) { return grey(0, alpha); }

    bool operator==(const Color&) const = default;

    constexpr Color withAlpha(double value) const { return {red, green, blue, value}; }

    /// This colour moved by `fraction` (0 to 1) of the way to opaque white.
    constexpr Color lightened(double fraction) const {
        const auto mix = [fraction](double from) { return from + (1 - from) * fraction; };
        return {mix(red), mix(green), mix(blue), mix(alpha)};
    }
};
