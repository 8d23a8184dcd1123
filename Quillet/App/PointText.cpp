#include "App/PointText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>

namespace {

std::string decimal(double value) {
    std::array<char, 400> digits{};  // the longest plain double has about 330
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed)
            .ptr;
    return {digits.data(), end};
}

bool skip(std::string_view& text, char expected) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    if (!text.starts_with(expected)) return false;
    text.remove_prefix(1);
    return true;
}

std::optional<double> number(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || !std::isfinite(value)) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return value;
}

}  // namespace

std::string PointText::format(Point point) {
    std::string text = "{";
    return text.append(decimal(point.x)).append(", ").append(decimal(point.y)).append("}");
}

Point PointText::parse(std::string_view text) {
    if (!skip(text, '{')) return {};
    const auto x = number(text);
    if (!x || !skip(text, ',')) return {};
    const auto y = number(text);
    if (!y || !skip(text, '}')) return {};
    return {*x, *y};
}
