#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>

/// What was last read from the end of the newest log. It stands while the same log's end says
/// nothing: that end may begin inside a character, and a long turn pushes the line that a collector
/// looks for out of it. Any thread may use it.
template <typename Value>
class LastReading {
public:
    static constexpr std::size_t tailBytes = 262144;  ///< The end of a log.

    /// Keeps `value`, as read from `log` now, and returns it; without one, what was kept of the
    /// same log.
    std::optional<Value> update(const std::string& log, const std::optional<Value>& value) {
        const std::lock_guard guard(lock);
        if (value) {
            keptLog = log;
            kept = value;
        }
        return keptLog == log ? kept : std::nullopt;
    }

private:
    friend class CollectorReset;

    std::mutex lock;  // guards both below
    std::string keptLog;
    std::optional<Value> kept;
};
