#include "Platform/Clock.h"

#include <atomic>
#include <chrono>
#include <ctime>

namespace {

Instant systemNow() {
    return std::chrono::duration<Instant>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::atomic<Clock::Source> currentSource = systemNow;

}  // namespace

Instant Clock::now() {
    return currentSource.load()();
}

Clock::Source Clock::exchangeSource(Source source) {
    return currentSource.exchange(source ? source : systemNow);
}

Instant Clock::startOfDay(Instant instant) {
    const auto seconds = static_cast<std::time_t>(instant);
    std::tm day{};
    localtime_r(&seconds, &day);
    day.tm_hour = day.tm_min = day.tm_sec = 0;
    day.tm_isdst = -1;

    // mktime resolves a midnight inside a daylight-saving gap to either side of it. On the early side, the gap's
    // far end is as many seconds ahead as the result is short of midnight.
    std::tm resolved = day;
    const std::time_t start = std::mktime(&resolved);
    if (resolved.tm_mday == day.tm_mday) return static_cast<Instant>(start);
    const int secondsShort = 86400 - (resolved.tm_hour * 3600 + resolved.tm_min * 60 + resolved.tm_sec);
    return static_cast<Instant>(start + secondsShort);
}
