#include "Support/ISO8601.h"

#include <chrono>
#include <cmath>
#include <cstdio>

namespace {

using namespace std::chrono;

/// Reads one text from left to right. The first thing that isn't as asked for spoils the whole.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest(text) {}

    int digits(std::size_t count) {
        int value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (!isDigit()) return spoil();
            value = value * 10 + (rest.front() - '0');
            rest.remove_prefix(1);
        }
        return value;
    }

    /// Digits after a decimal point, as a part of one.
    double fraction() {
        double value = 0;
        double unit = 0.1;
        if (!isDigit()) spoil();
        for (; isDigit(); rest.remove_prefix(1), unit /= 10)
            value += (rest.front() - '0') * unit;
        return value;
    }

    bool skip(char expected) {
        if (rest.empty() || rest.front() != expected) return false;
        rest.remove_prefix(1);
        return true;
    }

    void require(char expected) {
        if (!skip(expected)) spoil();
    }

    int spoil() {
        spoiled = true;
        return 0;
    }

    bool isDigit() const { return !rest.empty() && rest.front() >= '0' && rest.front() <= '9'; }
    bool finished() const { return !spoiled && rest.empty(); }

private:
    std::string_view rest;
    bool spoiled = false;
};

/// Seconds that the zone designator is ahead of UTC.
double zoneOffset(Scanner& scanner) {
    if (scanner.skip('Z')) return 0;
    const double sign = scanner.skip('-') ? -1 : 1;
    if (sign > 0) scanner.require('+');
    const int hour = scanner.digits(2);
    const bool minutesFollow = scanner.skip(':') || scanner.isDigit();
    const int minute = minutesFollow ? scanner.digits(2) : 0;
    if (hour > 23 || minute > 59) scanner.spoil();
    return sign * (hour * 3600 + minute * 60);
}

double timeOfDay(Scanner& scanner) {
    const int hour = scanner.digits(2);
    scanner.require(':');
    const int minute = scanner.digits(2);
    scanner.require(':');
    const int second = scanner.digits(2);
    if (hour > 23 || minute > 59 || second > 60) scanner.spoil();  // 60: a leap second
    return hour * 3600 + minute * 60 + second + (scanner.skip('.') ? scanner.fraction() : 0);
}

year_month_day date(Scanner& scanner) {
    const year y(scanner.digits(4));
    scanner.require('-');
    const month m(static_cast<unsigned>(scanner.digits(2)));
    scanner.require('-');
    const year_month_day date(y, m, day(static_cast<unsigned>(scanner.digits(2))));
    if (!date.ok()) scanner.spoil();
    return date;
}

}  // namespace

std::optional<Instant> ISO8601::parse(std::string_view text) {
    Scanner scanner(text);
    const year_month_day day = date(scanner);
    scanner.require('T');
    const double time = timeOfDay(scanner);
    const double offset = zoneOffset(scanner);
    if (!scanner.finished()) return std::nullopt;
    return duration<Instant>(sys_days(day).time_since_epoch()).count() + time - offset;
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
