#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Model/UsageSnapshot.h"

/// Gemini's login, model, plan and the number of requests logged today, all from its tool's own folder. The vendor
/// reports no percentages; the count stands in the snapshot's `error` while it is connected.
class GeminiProvider {
public:
    UsageSnapshot collect() const;

    // Each takes the expanded path of the tool's folder.
    static std::optional<std::string> currentModelID(const std::string& dir);
    static std::optional<std::string> planLabel(const std::string& dir);       ///< "API" or "Free".
    static std::optional<std::int64_t> requestsToday(const std::string& dir);  ///< Absent without a log of today.
};
