#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Model/UsageSnapshot.h"
#include "Providers/LastReading.h"

/// Codex's usage, from its usage endpoint with the login that its own tool keeps, and the model and
/// effort from that tool's session logs or configuration. All instances share one cache, and any
/// thread may use them.
class CodexProvider {
public:
    struct AuthFile {
        struct Tokens {
            std::optional<std::string> access_token;
            std::optional<std::string> account_id;
        };
        std::optional<Tokens> tokens;
    };
    struct APIWindow {
        std::optional<double> used_percent;
        std::optional<double> limit_window_seconds;
        std::optional<double> reset_after_seconds;
        std::optional<double> reset_at;  ///< Seconds since the Unix epoch.
    };
    struct APIRateLimit {
        std::optional<APIWindow> primary_window;
        std::optional<APIWindow> secondary_window;
    };
    struct APIUsage {
        std::optional<std::string> plan_type;
        std::optional<APIRateLimit> rate_limit;
    };
    /// What the user's tool is set to, in its own words.
    struct ModelEffort {
        std::optional<std::string> model;
        std::optional<std::string> effort;
    };

    /// Blocks on files, and on the network for up to 10 seconds. The snapshot tells what failed.
    UsageSnapshot collect() const;

    /// From the newest session log, else from the configuration file.
    static ModelEffort currentModelEffort();

    static std::optional<AuthFile> decodeAuth(std::string_view text);
    static std::optional<APIUsage> decodeUsage(std::string_view body);
    static void fill(UsageSnapshot& snapshot, const APIUsage& usage, Instant now);

    /// The newest turn in the end of a session log that names a model or an effort.
    static std::optional<ModelEffort> modelEffortInLog(std::string_view text);
    static ModelEffort modelEffortInConfig(std::string_view text);

private:
    static std::optional<AuthFile> readAuth();

    static inline std::mutex lock;  // guards liveCache; not held during a request
    static inline std::optional<TimedSnapshot> liveCache;  // of the last good reply

    static inline LastReading<ModelEffort> lastTurn;
};
