#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "Providers/ClaudeProvider.h"
#include "Providers/CodexProvider.h"
#include "Tests/Support/ScopedClock.h"
#include "Tests/Support/TemporaryHome.h"

/// Forgets what the online collectors keep for the life of the process.
class CollectorReset {
public:
    CollectorReset() {
        const std::scoped_lock both(ClaudeProvider::lock, CodexProvider::lock);
        ClaudeProvider::cachedToken.reset();
        ClaudeProvider::lastFailedReadAt.reset();
        ClaudeProvider::liveCache.reset();
        CodexProvider::liveCache.reset();
    }
};

/// connected|plan|model|effort|daily|weekly|daily reset|weekly reset|error, "-" for what is absent.
inline std::string shown(const UsageSnapshot& snapshot) {
    std::ostringstream out;
    out.precision(15);
    out << (snapshot.connected ? "yes" : "no");
    const auto put = [&out](const auto&... values) { ((values ? out << '|' << *values : out << "|-"), ...); };
    put(snapshot.planLabel, snapshot.modelLabel, snapshot.effortLabel, snapshot.dailyPercent,
        snapshot.weeklyPercent, snapshot.dailyResetAt, snapshot.weeklyResetAt, snapshot.error);
    return out.str();
}
