#include <charconv>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "CLI/CLI.h"
#include "Model/AppConfig.h"
#include "Model/ModelNaming.h"
#include "Model/UsageFormat.h"
#include "Providers/Collectors.h"
#include "Support/ISO8601.h"
#include "Support/Text.h"

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

/// A number in the shortest form that reads back the same; null if it is not finite.
std::string shortest(double number) {
    char digits[32];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    return std::isfinite(number) ? std::string(digits, end) : "null";
}

/// With "/" escaped.
std::string scalar(const nlohmann::json& value) {
    if (value.is_number_float()) return shortest(value.get<double>());
    std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return Text::replacing(std::move(text), "/", "\\/");
}

/// With sorted keys, a line for each member and " : " between key and value.
std::string pretty(const nlohmann::json& value, const std::string& indent = "") {
    if (!value.is_structured() || value.empty()) return scalar(value);
    const std::string inner = indent + "  ";
    std::string members;
    for (const auto& [key, member] : value.items()) {
        members += (members.empty() ? "\n" : ",\n") + inner;
        if (value.is_object()) members += scalar(key) + " : ";
        members += pretty(member, inner);
    }
    return (value.is_object() ? "{" : "[") + members + "\n" + indent +
           (value.is_object() ? "}" : "]");
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
        report += std::string(provider.rawValue()) + ":" + rest + "\n";
    }
    return report;
}

std::string CLI::jsonReport(const Collected& collected) {
    auto records = nlohmann::json::array();
    for (const auto& [provider, snapshot] : collected)
        records.push_back(record(snapshot));
    return pretty(records) + "\n";
}

void CLI::status(bool json) {
    const auto collected = collectAll();
    std::fputs((json ? jsonReport(collected) : textReport(collected)).c_str(), stdout);
}
