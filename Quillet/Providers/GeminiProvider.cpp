// Gemini's vendor offers no usage endpoint. Its tool logs every request below tmp and logs, without dates on the
// lines, so a file's own date decides whether it counts for today.
#include "Providers/GeminiProvider.h"

#include <algorithm>

#include "Model/ModelNaming.h"
#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"
#include "Support/JSON.h"
#include "Support/LocalFiles.h"

namespace {

constexpr const char* folder = "~/.gemini";
constexpr const char* credentialsFile = "/oauth_creds.json";
constexpr const char* accountsFile = "/google_accounts.json";
constexpr const char* settingsFiles[] = {"/settings.json", "/config.json"};
constexpr const char* logFolders[] = {"/tmp", "/logs"};
constexpr std::size_t logTail = 262144;  // bytes
constexpr std::string_view requestWords[] = {"request", "generateContent"};

std::optional<JSONObject> objectInFile(const std::string& path) {
    const auto text = RegularFile::contents(path);
    return text ? JSONObject::parse(*text) : std::nullopt;
}

bool isLog(std::string_view name) {
    return name.ends_with(".log") || name.ends_with(".jsonl");
}

/// Lines that contain any of the words. The search runs over the whole text and looks for line ends only after a
/// hit; `next` keeps where each word comes next, so that none is searched for twice in the same place.
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

std::optional<std::string> GeminiProvider::currentModelID(const std::string& dir) {
    for (const char* file : settingsFiles) {
        const auto settings = objectInFile(dir + file);
        if (!settings) continue;
        if (auto model = settings->text("model")) return model;
        if (auto model = settings->text("selectedModel")) return model;
    }
    return std::nullopt;
}

std::optional<std::string> GeminiProvider::planLabel(const std::string& dir) {
    const auto credentials = objectInFile(dir + credentialsFile);
    if (!credentials) return std::nullopt;
    return credentials->contains("api_key") ? "API" : "Free";
}

std::optional<std::int64_t> GeminiProvider::requestsToday(const std::string& dir) {
    const Instant today = Clock::startOfDay(Clock::now());
    std::optional<std::int64_t> total;
    const auto addFile = [&](const std::string& logs, const char* name, Instant modifiedAt) {
        if (modifiedAt < today) return;
        const auto text = LocalFiles::tail(logs + '/' + name, logTail);
        if (text) total = total.value_or(0) + requestLines(*text);
    };
    for (const char* logs : logFolders) {
        LocalFiles::forEachFile(dir + logs, LocalFiles::Hidden::include, isLog, addFile);
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
    if (!LocalFiles::exists(dir + credentialsFile) && !LocalFiles::exists(dir + accountsFile)) {
        snapshot.error = UsageSnapshot::loginRequired;
        return snapshot;
    }
    snapshot.connected = true;
    snapshot.modelLabel = ModelNaming::displayModel(currentModelID(dir));
    snapshot.planLabel = planLabel(dir);
    if (const auto requests = requestsToday(dir)) snapshot.error = std::to_string(*requests) + " reqs today";
    return snapshot;
}
