#include <cstdio>
#include <nlohmann/json.hpp>

#include "CLI/CLI.h"
#include "Model/AppConfig.h"
#include "Model/ModelNaming.h"
#include "Model/UsageFormat.h"
#include "Providers/Collectors.h"
#include "Support/ISO8601.h"
#include "Support/JSON.h"

namespace {

std::string windowText(const char* name, std::optional<double> percent,
                       std::optional<Instant> resetAt) {
    std::string text = std::string(name) + " " + UsageFormat::percentText(percent);
    if (resetAt) text += " (resets " + UsageFormat::resetText(*resetAt) + ")";
    return text;
}

std::string figures(const UsageSnapshot& snapshot) {
    std::string text;
    if (const auto model = ModelNaming::combined(snapshot.modelLabel, snapshot.effortLabel))
        text += " " + *model;
    if (snapshot.planLabel) text += " [" + *snapshot.planLabel + "]";
    return text + " " +
           windowText(UsageFormat::shortWindow, snapshot.dailyPercent, snapshot.dailyResetAt) +
           " · " +
           windowText(UsageFormat::longWindow, snapshot.weeklyPercent, snapshot.weeklyResetAt);
}

/// Labels come from files and replies; none of them may move the terminal's cursor or break the
/// line. In UTF-8 the controls above ASCII are C2 80 to C2 9F.
std::string withoutControls(const std::string& line) {
    std::string result;
    for (const char c : line) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 && byte < 0xA0 && result.ends_with('\xC2')) {
            result.back() = ' ';
        } else {
            result += byte < 0x20 || byte == 0x7F ? ' ' : c;
        }
    }
    return result;
}

template <typename Value>
nlohmann::json orNull(const std::optional<Value>& value) {
    return value ? nlohmann::json(*value) : nlohmann::json();
}

nlohmann::json instantText(std::optional<Instant> instant) {
    return instant ? orNull(ISO8601::format(*instant)) : nlohmann::json();
}

nlohmann::json record(const UsageSnapshot& snapshot) {
    return {
        {"provider", snapshot.provider.rawValue()},
        {"isConnected", snapshot.connected},
        {"planLabel", orNull(snapshot.planLabel)},
        {"model", orNull(snapshot.modelLabel)},
        {"effort", orNull(snapshot.effortLabel)},
        {"dailyPercent", orNull(snapshot.dailyPercent)},
        {"weeklyPercent", orNull(snapshot.weeklyPercent)},
        {"dailyResetsAt", instantText(snapshot.dailyResetAt)},
        {"weeklyResetsAt", instantText(snapshot.weeklyResetAt)},
        {"error", orNull(snapshot.error)},
        {"updatedAt", instantText(snapshot.updatedAt)},
    };
}

}  // namespace

CLI::Collected CLI::collectAll() {
    Collected collected;
    for (const auto& [provider, enabled] : AppConfig::load().entries) {
        if (enabled) collected.emplace_back(provider, Collectors::collect(provider));
    }
    return collected;
}

std::string CLI::textReport(const Collected& collected) {
    std::string report = "Quillet by ZENDRIK\n";
    for (const auto& [provider, snapshot] : collected) {
        const std::string rest = snapshot.error ? " " + *snapshot.error : figures(snapshot);
        report += withoutControls(std::string(provider.rawValue()) + ":" + rest) + "\n";
    }
    return report;
}

std::string CLI::jsonReport(const Collected& collected) {
    auto records = nlohmann::json::array();
    for (const auto& [provider, snapshot] : collected)
        records.push_back(record(snapshot));
    return JSON::pretty(records) + "\n";
}

void CLI::status(bool json) {
    const auto collected = collectAll();
    std::fputs((json ? jsonReport(collected) : textReport(collected)).c_str(), stdout);
}
