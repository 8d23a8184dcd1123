#pragma once

#include <optional>
#include <string>

#include "Model/Provider.h"
#include "Platform/Clock.h"

/// What is known about one provider's usage at one moment.
struct UsageSnapshot {
    // Errors:
    static constexpr const char* notInstalled = "Not installed";  ///< No directory of the tool.
    static constexpr const char* loginRequired =
        "Login required";  ///< A directory without a login.

    explicit UsageSnapshot(Provider provider) : provider(provider), updatedAt(Clock::now()) {}

    Provider provider;
    bool connected = false;                 ///< Usable credentials or local data were found.
    std::optional<std::string> planLabel;   ///< As shown, for example "Max".
    std::optional<std::string> modelLabel;  ///< As shown, for example "Opus 4.7".
    std::optional<std::string> effortLabel;
    std::optional<double> dailyPercent;   ///< Short window, percent as reported, not clamped.
    std::optional<double> weeklyPercent;  ///< Long window, likewise.
    std::optional<Instant> dailyResetAt;
    std::optional<Instant> weeklyResetAt;
    /// Shown in place of figures: why there are none or, while connected, a count reported instead
    /// of them.
    std::optional<std::string> error;
    Instant updatedAt;  ///< When the data was obtained; a replay keeps it.
};

/// A snapshot as a collector's cache keeps it.
struct TimedSnapshot {
    UsageSnapshot snapshot;
    Instant at;  ///< When it was stored.
};
