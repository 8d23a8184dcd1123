#pragma once

#include <optional>
#include <string>

/// What was last read from the end of the newest log. It stands while the same log's end says
/// nothing: that end may begin inside a character, and a long turn pushes the line that a collector
/// looks for out of it.
template <typename Value>
class LastReading {
public:
    /// Keeps `value`, as read from `log` now, and gives it back; without one, what was kept of the
    /// same log.
    std::optional<Value> update(const std::string& log, const std::optional<Value>& value) {
        if (value) {
            keptLog = log;
            kept = value;
        }
        return keptLog == log ? kept : std::nullopt;
    }

private:
    std::string keptLog;
    std::optional<Value> kept;
};
