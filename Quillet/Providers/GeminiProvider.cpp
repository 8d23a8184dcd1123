// Gemini's vendor offers no usage endpoint, but its tool logs below tmp and logs. Its chats give
// each answer's time and model. Logs of other kinds have no dates on their lines, so a file's own
// date decides whether it counts for today.
#include "Providers/GeminiProvider.h"

#include <algorithm>

#include "Model/ModelNaming.h"
#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"
#include "Providers/GeminiChat.h"
#include "Support/JSON.h"
#include "Support/LocalFiles.h"

namespace {

constexpr const char* folder = "~/.gemini";
constexpr const char* credentialsFile = "/oauth_creds.json";
constexpr const char* accountsFile = "/google_accounts.json";
constexpr const char* settingsFile = "/settings.json";
constexpr const char* modelFiles[] = {settingsFile, "/config.json"};
constexpr std::string_view apiKeyAuthType = "gemini-api-key";
constexpr const char* logFolders[] = {"/tmp", "/logs"};
constexpr std::string_view chatSuffix = ".jsonl";
constexpr std::size_t logTail = 262144;  // bytes
constexpr int maxOlderLogs = 16;         // in which a chat is looked for, where none changed today
constexpr std::string_view requestWords[] = {"request", "generateContent"};

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

/// Lines that contain any of the words. The search runs over the whole text and looks for line ends
/// only after a hit; `next` keeps where each word comes next, so that none is searched for twice in
/// the same place.
std::int64_t requestLines(std::string_view text) {
    std::int64_t count = 0;
    std::size_t next[] = {text.find(requestWords[0]), text.find(requestWords[1])};
    for (;;) {
        const std::size_t hit = std::min(next[0], next[1]);
        if (hit == std::string_view::npos) return count;
        ++count;
        const std::size_t lineEnd = text.find('\n', hit);
        if (lineEnd == std::string_view::npos) return count;
        for (std::size_t i = 0; i < std::size(next); ++i) {
            if (next[i] < lineEnd) next[i] = text.find(requestWords[i], lineEnd);
        }
    }
}

}  // namespace

GeminiProvider::Logs GeminiProvider::logsBelow(const std::string& dir) {
    Logs logs;
    const auto isLog = [](std::string_view name) {
        return name.ends_with(".log") || name.ends_with(chatSuffix);
    };
    const auto add = [&](const std::string& path, const char* name, Instant modifiedAt) {
        logs.push_back({path + '/' + name, modifiedAt});
    };
    for (const char* below : logFolders) {
        LocalFiles::forEachFile(dir + below, LocalFiles::Hidden::include, isLog, add);
    }
    std::ranges::stable_sort(logs, std::ranges::greater(), &Log::modifiedAt);
    return logs;
}

/// By its first line, which is read on its own where the tail may not reach back to it.
bool GeminiProvider::isChat(const Log& log, std::string_view tail) {
    if (!log.path.ends_with(chatSuffix)) return false;
    if (!tail.empty() && tail.size() < logTail) return GeminiChat::isBeginning(tail);
    const auto beginning = RegularFile::beginning(log.path, GeminiChat::maxHeaderBytes);
    return beginning && GeminiChat::isBeginning(*beginning);
}

/// The one that the settings name; they name none where the tool itself chose it.
std::optional<std::string> GeminiProvider::currentModelID(const std::string& dir,
                                                          const Logs& logs) {
    for (const char* file : modelFiles) {
        const auto settings = objectInFile(dir + file);
        if (!settings) continue;
        if (auto model = settings->text("model")) return model;
        if (auto model = settings->text("selectedModel")) return model;
    }
    return modelInNewestChat(logs);
}

std::optional<std::string> GeminiProvider::modelInNewestChat(const Logs& logs) {
    const Instant today = Clock::startOfDay(Clock::now());
    int older = 0;
    const auto chat = std::ranges::find_if(logs, [&](const Log& log) {
        return (log.modifiedAt >= today || older++ < maxOlderLogs) && isChat(log);
    });
    if (chat == logs.end()) return std::nullopt;
    const auto tail = LocalFiles::tail(chat->path, logTail);
    return lastModel.update(chat->path, tail ? GeminiChat::newestModel(*tail) : std::nullopt);
}

std::optional<std::string> GeminiProvider::planLabel(const std::string& dir) {
    if (!LocalFiles::exists(dir + credentialsFile)) {
        return selectedAuthType(dir) == apiKeyAuthType ? std::optional("API") : std::nullopt;
    }
    const auto credentials = objectInFile(dir + credentialsFile);
    if (!credentials) return std::nullopt;
    return credentials->contains("api_key") ? "API" : "Free";
}

std::optional<std::int64_t> GeminiProvider::requestsToday(const Logs& logs) {
    const Instant today = Clock::startOfDay(Clock::now());
    std::optional<std::int64_t> total;
    for (const Log& log : logs) {
        if (log.modifiedAt < today) break;
        const auto tail = LocalFiles::tail(log.path, logTail);
        if (!tail) continue;
        total = total.value_or(0) +
                (isChat(log, *tail) ? GeminiChat::answers(*tail, today) : requestLines(*tail));
    }
    return total;
}

UsageSnapshot GeminiProvider::collect() const {
    UsageSnapshot snapshot(Provider::gemini);
    const std::string dir = HomeDirectory::expanding(folder);
    if (!LocalFiles::exists(dir)) {
        snapshot.error = UsageSnapshot::notInstalled;
        return snapshot;
    }
    if (!isSignedIn(dir)) {
        snapshot.error = UsageSnapshot::loginRequired;
        return snapshot;
    }
    snapshot.connected = true;
    const Logs logs = logsBelow(dir);
    snapshot.modelLabel = ModelNaming::displayModel(currentModelID(dir, logs));
    snapshot.planLabel = planLabel(dir);
    if (const auto requests = requestsToday(logs))
        snapshot.error = std::to_string(*requests) + " reqs today";
    return snapshot;
}
