#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Model/UsageSnapshot.h"
#include "Providers/LastReading.h"

/// Claude's usage, from its usage endpoint with the login that its own tool keeps, and the model
/// from its session logs. All instances share one state, and any thread may use them.
class ClaudeProvider {
public:
    struct OAuth {
        std::string accessToken;
        std::optional<std::string> subscriptionType;
        std::optional<double> expiresAt;  ///< Milliseconds since the Unix epoch.
    };
    struct CredentialsFile {
        OAuth claudeAiOauth;
    };
    struct Window {
        std::optional<double> utilization;  ///< Percent.
        std::optional<std::string> resets_at;
    };
    struct LiveUsage {
        std::optional<Window> five_hour;
        std::optional<Window> seven_day;
    };

    /// Blocks on files, and on the network for up to 10 seconds. The snapshot tells what failed.
    UsageSnapshot collect() const;

    /// Absent without a token: the tool leaves an empty one behind when the user signs out.
    static std::optional<CredentialsFile> decodeCredentials(std::string_view text);
    static std::optional<LiveUsage> decodeUsage(std::string_view body);
    static void fill(UsageSnapshot& snapshot, const LiveUsage& usage);

    /// The model of the newest line that names one in the end of a session log.
    static std::optional<std::string> modelIDInLog(std::string_view text);

private:
    static std::optional<OAuth> credentials();
    static std::optional<OAuth> readCredentials();
    static std::optional<std::string> currentModelID();

    static inline std::mutex lock;  // guards the next three; not held during a request
    static inline std::optional<OAuth> cachedToken;
    static inline std::optional<Instant> lastFailedReadAt;  // absent after a successful read
    static inline std::optional<TimedSnapshot> liveCache;   // of the last good reply

    static inline LastReading<std::string> lastModel;
};
