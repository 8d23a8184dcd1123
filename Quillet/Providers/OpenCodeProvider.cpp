// OpenCode reports no allowance, so the percentage is of a fixed token budget for five hours.
#include "Providers/OpenCodeProvider.h"

#include <algorithm>

#include "Platform/HomeDirectory.h"
#include "Support/LocalFiles.h"

namespace {

constexpr const char* dataDirectory = "~/.local/share/opencode";
constexpr double windowBudget = 3'000'000;  // tokens
constexpr double maxPercent = 100;

}  // namespace

UsageSnapshot OpenCodeProvider::collect() const {
    UsageSnapshot snapshot(Provider::opencode);
    const std::string dir = HomeDirectory::expanding(dataDirectory);
    if (!LocalFiles::exists(dir)) {
        snapshot.error = UsageSnapshot::notInstalled;
        return snapshot;
    }
    if (!LocalFiles::exists(dir + "/auth.json")) {
        snapshot.error = UsageSnapshot::loginRequired;
        return snapshot;
    }
    snapshot.connected = true;
    const auto tokens = tokensInLastFiveHours(dir + "/opencode.db");
    if (tokens && *tokens >= 1) {
        snapshot.dailyPercent =
            std::min(static_cast<double>(*tokens) / windowBudget * 100, maxPercent);
    }
    return snapshot;
}
