#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Model/UsageSnapshot.h"
#include "Providers/LastReading.h"

/// Gemini's login, model, plan and the number of requests logged today, all from its tool's own
/// directory. The vendor reports no percentages; the count stands in the snapshot's `error` while
/// it is connected. Any thread may use it.
class GeminiProvider {
public:
    UsageSnapshot collect() const;

private:
    friend class CollectorReset;

    struct Log {
        std::string path;
        Instant modifiedAt;
    };
    using Logs = std::vector<Log>;  // newest first

    // `dir` is the expanded path of the tool's directory.
    static Logs logsBelow(const std::string& dir);
    static std::optional<std::string> currentModelID(const std::string& dir, const Logs& logs);
    static std::optional<std::string> modelInNewestChat(const Logs& logs);
    static std::optional<std::string> planLabel(const std::string& dir);
    static std::optional<std::int64_t> requestsToday(const Logs& logs);

    static inline LastReading<std::string> lastModel;
};
