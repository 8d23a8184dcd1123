// Codex's tool writes a turn_context record to its session log at every turn, with the settings in
// force at that moment. The configuration file says only what a new session would start with.
#include "Platform/HomeDirectory.h"
#include "Providers/CodexProvider.h"
#include "Support/JSON.h"
#include "Support/LocalFiles.h"
#include "Support/Text.h"

namespace {

constexpr const char* sessionDirectory = "~/.codex/sessions";
constexpr const char* sessionSuffix = ".jsonl";
constexpr const char* configPath = "~/.codex/config.toml";
constexpr std::string_view blanks = " \t\r";
constexpr std::string_view quotes = "\"'";

std::optional<std::string> effortOfTurn(const JSONObject& payload) {
    const auto mode = payload.object("collaboration_mode");
    const auto settings = mode ? mode->object("settings") : std::nullopt;
    const auto effort = settings ? settings->text("reasoning_effort") : std::nullopt;
    return effort ? effort : payload.text("model_reasoning_effort");
}

std::optional<CodexProvider::ModelEffort> modelEffortInLine(std::string_view line) {
    if (line.find(R"("turn_context")") == std::string_view::npos) return std::nullopt;
    const auto record = JSONObject::parse(line);
    if (!record || record->text("type") != "turn_context") return std::nullopt;
    const auto payload = record->object("payload");
    if (!payload) return std::nullopt;
    CodexProvider::ModelEffort found{payload->text("model"), effortOfTurn(*payload)};
    return found.model || found.effort ? std::optional(found) : std::nullopt;
}

/// What follows the first "=", without the quotes around it; absent without a "=".
std::optional<std::string> settingValue(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    return std::string(Text::trimmed(Text::trimmed(line.substr(equals + 1), blanks), quotes));
}

}  // namespace

std::optional<CodexProvider::ModelEffort> CodexProvider::modelEffortInLog(std::string_view text) {
    return Text::fromLastLine(text, modelEffortInLine);
}

CodexProvider::ModelEffort CodexProvider::modelEffortInConfig(std::string_view text) {
    ModelEffort found;
    while (!text.empty()) {
        const std::string_view line = Text::trimmed(Text::next(text, '\n'), blanks);
        const auto value = settingValue(line);
        if (!value) continue;
        if (line.starts_with("model ")) found.model = value;
        if (line.starts_with("model_reasoning_effort")) found.effort = value;
    }
    return found;
}

CodexProvider::ModelEffort CodexProvider::currentModelEffort() {
    if (const auto path = LocalFiles::newestFile(sessionDirectory, sessionSuffix)) {
        const auto end = LocalFiles::tail(*path, logTailBytes);
        const auto turn = end ? modelEffortInLog(*end) : std::nullopt;
        if (const auto last = lastTurn.update(*path, turn)) return *last;
    }

    const auto config = LocalFiles::text(HomeDirectory::expanding(configPath));
    return config ? modelEffortInConfig(*config) : ModelEffort{};
}
