#include "Support/ISO8601.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace {

using namespace std::chrono;

/// Whether `text` is of this shape, in which d stands for a digit and + for a sign.
bool matches(std::string_view text, std::string_view shape) {
    return std::ranges::equal(text, shape, [](char c, char expected) {
        if (expected == 'd') return c >= '0' && c <= '9';
        return c == expected || (expected == '+' && c == '-');
    });
}

int number(std::string_view digits) {
    int value = 0;
    for (const char digit : digits)
        value = value * 10 + (digit - '0');
    return value;
}

/// The value of a decimal point and digits, 0 for nothing.
std::optional<double> fraction(std::string_view text) {
    double value = 0;
    if (text.empty()) return value;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), value);
    const bool whole = text.front() == '.' && error == std::errc() && end == text.end();
    return whole ? std::optional(value) : std::nullopt;
}

/// Seconds that the zone designator is ahead of UTC.
std::optional<int> zoneOffset(std::string_view zone) {
    if (zone == "Z") return 0;
    if (!matches(zone, "+dd:dd") && !matches(zone, "+dddd") && !matches(zone, "+dd"))
        return std::nullopt;
    const int hour = number(zone.substr(1, 2));
    const int minute = zone.size() > 3 ? number(zone.substr(zone.size() - 2)) : 0;
    if (hour > 23 || minute > 59) return std::nullopt;
    return (zone.front() == '-' ? -60 : 60) * (hour * 60 + minute);
}

}  // namespace

std::optional<Instant> ISO8601::parse(std::string_view text) {
    constexpr std::string_view shape = "dddd-dd-ddTdd:dd:dd";
    if (!matches(text.substr(0, shape.size()), shape)) return std::nullopt;
    const auto part = [&](std::size_t at) { return number(text.substr(at, 2)); };
    const auto day = year(100 * part(0) + part(2)) / part(5) / part(8);
    const int hour = part(11);
    const int minute = part(14);
    const int second = part(17);

    text.remove_prefix(shape.size());
    const auto zoneAt = std::min(text.find_first_not_of(".0123456789"), text.size());
    const auto secondFraction = fraction(text.substr(0, zoneAt));
    const auto offset = zoneOffset(text.substr(zoneAt));
    constexpr int leapSecond = 60;
    if (!day.ok() || hour > 23 || minute > 59 || second > leapSecond || !secondFraction || !offset)
        return std::nullopt;
    const auto time = sys_days(day) + hours(hour) + minutes(minute) + seconds(second - *offset);
    return duration<Instant>(time.time_since_epoch()).count() + *secondFraction;
}

std::optional<std::string> ISO8601::format(Instant instant) {
    constexpr Instant yearZero = -62167219200;
    constexpr Instant yearTenThousand = 253402300800;
    if (!(instant >= yearZero && instant < yearTenThousand)) return std::nullopt;

    const sys_seconds moment{seconds(static_cast<std::int64_t>(std::floor(instant)))};
    const year_month_day day(floor<days>(moment));
    const hh_mm_ss time(moment - floor<days>(moment));
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", int(day.year()),
                  unsigned(day.month()), unsigned(day.day()), int(time.hours().count()),
                  int(time.minutes().count()), int(time.seconds().count()));
    return text;
}
