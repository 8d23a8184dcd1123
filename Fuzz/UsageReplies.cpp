#include <cmath>
#include <nlohmann/json.hpp>

#include "CLI/CLI.h"
#include "Fuzz.h"
#include "Providers/ClaudeProvider.h"
#include "Providers/CodexProvider.h"

namespace {

constexpr Instant now = 1'750'000'000;

bool finite(const std::optional<double>& number) {
    return !number || std::isfinite(*number);
}

// Whatever a vendor sends, the reports stay valid JSON and UTF-8.
void requireReport(const UsageSnapshot& snapshot) {
    const CLI::Collected collected = {{snapshot.provider, snapshot}};
    require(!nlohmann::json::parse(CLI::jsonReport(collected), nullptr, false).is_discarded());
    require(isUTF8(CLI::textReport(collected)));
}

void tryClaude(std::string_view body) {
    const auto usage = ClaudeProvider::decodeUsage(body);
    if (!usage) return;
    UsageSnapshot snapshot(Provider::claude);
    snapshot.planLabel = "Max";
    ClaudeProvider::fill(snapshot, *usage);
    require(snapshot.dailyPercent ==
            (usage->five_hour ? usage->five_hour->utilization : std::nullopt));
    require(snapshot.weeklyPercent ==
            (usage->seven_day ? usage->seven_day->utilization : std::nullopt));
    require(finite(snapshot.dailyPercent) && finite(snapshot.weeklyPercent));
    require(finite(snapshot.dailyResetAt) && finite(snapshot.weeklyResetAt));
    require(!snapshot.dailyResetAt || (usage->five_hour && usage->five_hour->resets_at));
    require(!snapshot.weeklyResetAt || (usage->seven_day && usage->seven_day->resets_at));
    require(snapshot.planLabel == "Max" && !snapshot.error);
    requireReport(snapshot);
}

void tryCodex(std::string_view body) {
    const auto usage = CodexProvider::decodeUsage(body);
    if (!usage) return;
    UsageSnapshot snapshot(Provider::codex);
    CodexProvider::fill(snapshot, *usage, now);
    require(snapshot.planLabel.has_value() == usage->plan_type.has_value());
    require(finite(snapshot.dailyPercent) && finite(snapshot.weeklyPercent));
    require(finite(snapshot.dailyResetAt) && finite(snapshot.weeklyResetAt));
    require(snapshot.dailyPercent || !snapshot.dailyResetAt);
    require(snapshot.weeklyPercent || !snapshot.weeklyResetAt);
    require(usage->rate_limit || (!snapshot.dailyPercent && !snapshot.weeklyPercent));
    require(!snapshot.error && !snapshot.modelLabel && !snapshot.effortLabel);
    requireReport(snapshot);
}

}  // namespace

void tryInput(std::string_view text) {
    tryClaude(text);
    tryCodex(text);
}
