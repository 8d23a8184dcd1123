#pragma once

#include <atomic>

#include "Platform/Clock.h"

/// Stops the program's clock at an instant, until the next call or the end of the process.
inline void stopClock(Instant instant) {
    static std::atomic<Instant> current;
    current = instant;
    Clock::exchangeSource([] { return current.load(); });
}
