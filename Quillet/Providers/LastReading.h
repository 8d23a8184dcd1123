#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>

/// How much of the end of a log is read.
inline constexpr std::size_t logTailBytes = 262144;

/// The last value read from the end of the newest log. It is kept while that end has none: a long
/// turn can push the line out, and a cut inside a character makes all of it unreadable. Any thread
/// may use it.
template <typename Value>
class LastReading {
public:
    /// Keeps and returns `value`, as now found in `log`; without one, what was kept of that log.
    std::optional<Value> update(const std::string& log, const std::optional<Value>& value) {
        const std::lock_guard guard(lock);
        if (value) {
            keptLog = log;
            kept = value;
        }
        return keptLog == log ? kept : std::nullopt;
    }

private:
    std::mutex lock;  // guards both below
    std::string keptLog;
    std::optional<Value> kept;
};
