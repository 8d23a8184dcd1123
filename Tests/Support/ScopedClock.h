#pragma once

#include <atomic>

#include "Platform/Clock.h"

/// Stops the program's clock at an instant that the test chooses.
class ScopedClock {
public:
    explicit ScopedClock(Instant start)
        : previous(Clock::exchangeSource([] { return current.load(); })) {
        set(start);
    }
    ~ScopedClock() { Clock::exchangeSource(previous); }
    ScopedClock(const ScopedClock&) = delete;

    static void set(Instant instant) { current = instant; }

private:
    static inline std::atomic<Instant> current = 0;
    Clock::Source previous;
};
