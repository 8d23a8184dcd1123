// Gemini has no usage endpoint, but its tool writes logs below tmp and logs. Its chats tell each
// answer's time and model. Lines of other logs have no dates, so the file's date decides whether
// they count for today.
#include "Providers/GeminiProvider.h"

#include <algorithm>
#include <vector>

#include "Model/ModelNaming.h"
#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"
#include "Providers/GeminiChat.h"
#include "Support/JSON.h"
#include "Support/LocalFiles.h"
#include "Support/Text.h"

namespace {

constexpr const char* directory = "~/.gemini";
constexpr const char* credentialsFile = "/oauth_creds.json";
constexpr const char* accountsFile = "/google_accounts.json";
constexpr const char* settingsFile = "/settings.json";
constexpr const char* modelFiles[] = {settingsFile, "/config.json"};
constexpr std::string_view apiKeyAuthType = "gemini-api-key";
constexpr const char* logDirectories[] = {"/tmp", "/logs"};
constexpr std::string_view chatSuffix = ".jsonl";
constexpr int maxOlderLogs = 16;  // in which a chat is looked for if none changed today

struct Log {
    std::string path;
    Instant modifiedAt;
};
using Logs = std::vector<Log>;

std::optional<JSONObject> objectInFile(const std::string& path) {
    const auto text = RegularFile::contents(path);
    return text ? JSONObject::parse(*text) : std::nullopt;
}

/// How the user chose to sign in; absent where the settings don't tell.
std::optional<std::string> selectedAuthType(const std::string& dir) {
    const auto settings = objectInFile(dir + settingsFile);
    const auto security = settings ? settings->object("security") : std::nullopt;
    const auto auth = security ? security->object("auth") : std::nullopt;
    const auto type = auth ? auth->text("selectedType") : std::nullopt;
    return type && !type->empty() ? type : std::nullopt;
}

bool isSignedIn(const std::string& dir) {
    return LocalFiles::exists(dir + credentialsFile) || LocalFiles::exists(dir + accountsFile) ||
           selectedAuthType(dir);
}

/// Whether the log is a chat, which only its first line tells.
bool isChat(const std::string& path) {
    if (!path.ends_with(chatSuffix)) return false;
    const auto beginning = RegularFile::beginning(path, GeminiChat::maxHeaderBytes);
    return beginning && GeminiChat::isBeginning(*beginning);
}

std::int64_t requestLines(std::string_view text) {
    return std::ranges::count_if(Text::split(text, '\n'), [](std::string_view line) {
        return line.find("request") != std::string_view::npos ||
               line.find("generateContent") != std::string_view::npos;
    });
}

/// The newest first.
Logs logsBelow(const std::string& dir) {
    Logs logs;
    const auto isLog = [](std::string_view name) {
        return name.ends_with(".log") || name.ends_with(chatSuffix);
    };
    const auto add = [&](const std::string& path, const char* name, Instant modifiedAt) {
        logs.push_back({path + '/' + name, modifiedAt});
    };
    for (const char* below : logDirectories) {
        LocalFiles::forEachFile(dir + below, LocalFiles::Hidden::include, isLog, add);
    }
    std::ranges::stable_sort(logs, std::ranges::greater(), &Log::modifiedAt);
    return logs;
}

/// The settings name none if the tool itself chose it.
std::optional<std::string> modelInSettings(const std::string& dir) {
    for (const char* file : modelFiles) {
        const auto settings = objectInFile(dir + file);
        if (!settings) continue;
        if (auto model = settings->text("model")) return model;
        if (auto model = settings->text("selectedModel")) return model;
    }
    return std::nullopt;
}

/// Among the logs of today and some older ones.
std::optional<std::string> newestChat(const Logs& logs) {
    const Instant today = Clock::startOfDay(Clock::now());
    int older = 0;
    const auto chat = std::ranges::find_if(logs, [&](const Log& log) {
        return (log.modifiedAt >= today || older++ < maxOlderLogs) && isChat(log.path);
    });
    return chat == logs.end() ? std::nullopt : std::optional(chat->path);
}

std::optional<std::string> planLabel(const std::string& dir) {
    if (!LocalFiles::exists(dir + credentialsFile)) {
        return selectedAuthType(dir) == apiKeyAuthType ? std::optional("API") : std::nullopt;
    }
    const auto credentials = objectInFile(dir + credentialsFile);
    if (!credentials) return std::nullopt;
    return credentials->contains("api_key") ? "API" : "Free";
}

std::optional<std::int64_t> requestsToday(const Logs& logs) {
    const Instant today = Clock::startOfDay(Clock::now());
    std::optional<std::int64_t> total;
    for (const Log& log : logs) {
        if (log.modifiedAt < today) break;
        const auto tail = LocalFiles::tail(log.path, logTailBytes);
        if (!tail) continue;
        total = total.value_or(0) +
                (isChat(log.path) ? GeminiChat::answers(*tail, today) : requestLines(*tail));
    }
    return total;
}

}  // namespace

UsageSnapshot GeminiProvider::collect() const {
    UsageSnapshot snapshot(Provider::gemini);
    const std::string dir = HomeDirectory::expanding(directory);
    const bool isInstalled = LocalFiles::exists(dir);
    if (!isInstalled || !isSignedIn(dir)) {
        snapshot.error = isInstalled ? UsageSnapshot::loginRequired : UsageSnapshot::notInstalled;
        return snapshot;
    }
    snapshot.connected = true;
    const Logs logs = logsBelow(dir);
    auto model = modelInSettings(dir);
    if (const auto chat = model ? std::nullopt : newestChat(logs)) {
        const auto end = LocalFiles::tail(*chat, logTailBytes);
        model = lastModel.update(*chat, end ? GeminiChat::newestModel(*end) : std::nullopt);
    }
    snapshot.modelLabel = ModelNaming::displayModel(model);
    snapshot.planLabel = planLabel(dir);
    if (const auto requests = requestsToday(logs))
        snapshot.error = std::to_string(*requests) + " reqs today";
    return snapshot;
}
