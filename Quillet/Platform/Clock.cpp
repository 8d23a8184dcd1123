#include "Platform/Clock.h"

#include <atomic>
#include <chrono>
#include <cmath>
#include <ctime>

namespace {

Instant systemNow() {
    return std::chrono::duration<Instant>(std::chrono::system_clock::now().time_since_epoch())
        .count();
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
    const auto seconds = static_cast<std::time_t>(std::floor(instant));
    std::tm day{};
    localtime_r(&seconds, &day);
    day.tm_hour = day.tm_min = day.tm_sec = 0;
    day.tm_isdst = -1;
    return static_cast<Instant>(std::mktime(&day));  // the gap's end if midnight is skipped
}
