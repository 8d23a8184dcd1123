#pragma once

// Geometry in points, origin bottom-left, y upwards.

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    static constexpr Rect centred(Point center, Size size) {
        return {center.x - size.width / 2, center.y - size.height / 2, size.width, size.height};
    }

    constexpr Rect shifted(double dx, double dy) const { return {x + dx, y + dy, width, height}; }
    constexpr Rect inset(double by) const {
        return {x + by, y + by, width - 2 * by, height - 2 * by};
    }
    constexpr double midX() const { return x + width / 2; }
    constexpr double midY() const { return y + height / 2; }
    constexpr Point center() const { return {midX(), midY()}; }
    constexpr double maxX() const { return x + width; }
    constexpr double maxY() const { return y + height; }

    /// Edges at x and y are inside, the opposite ones outside.
    constexpr bool contains(Point point) const {
        return point.x >= x && point.x < maxX() && point.y >= y && point.y < maxY();
    }
};
