// Claude's own tool renews its token a little before it expires. So a token that is about to expire
// is read again before it is sent; this program never renews one.
#include "Providers/ClaudeProvider.h"

#include "Model/ModelNaming.h"
#include "Platform/HomeDirectory.h"
#include "Platform/Keychain.h"
#include "Platform/RegularFile.h"
#include "Providers/UsageEndpoint.h"
#include "Support/ISO8601.h"
#include "Support/JSON.h"
#include "Support/LocalFiles.h"
#include "Support/Text.h"

namespace {

constexpr const char* credentialFiles[] = {"~/.claude/.credentials.json",
                                           "~/.config/claude/credentials.json"};
constexpr const char* keychainService = "Claude Code-credentials";
constexpr double tokenReuseMargin = 120;  // seconds before expiry
constexpr double readBackOff = 900;       // seconds after a failed read
constexpr double freshCacheAge = 300;     // seconds
constexpr const char* usageURL = "https://api.anthropic.com/api/oauth/usage";
constexpr const char* logDirectory = "~/.claude/projects";
constexpr const char* logSuffix = ".jsonl";

std::optional<ClaudeProvider::Window> decodeWindow(const std::optional<JSONObject>& object) {
    if (!object) return std::nullopt;
    return ClaudeProvider::Window{object->number("utilization"), object->text("resets_at")};
}

std::optional<Instant> resetInstant(const ClaudeProvider::Window& window) {
    return window.resets_at ? ISO8601::parse(*window.resets_at) : std::nullopt;
}

std::optional<std::string> modelIDInLine(std::string_view line) {
    constexpr std::string_view opening = R"("model":")";
    const std::size_t found = line.find(opening);
    if (found == std::string_view::npos) return std::nullopt;
    const std::string_view rest = line.substr(found + opening.size());
    const std::size_t end = rest.find('"');
    if (end == std::string_view::npos) return std::nullopt;
    // The tool itself wrote a synthetic message.
    const std::string_view model = rest.substr(0, end);
    return model.empty() || model == "<synthetic>" ? std::nullopt
                                                   : std::optional(std::string(model));
}

}  // namespace

std::optional<ClaudeProvider::CredentialsFile> ClaudeProvider::decodeCredentials(
    std::string_view text) {
    const auto document = JSONObject::parse(text);
    const auto oauth = document ? document->object("claudeAiOauth") : std::nullopt;
    if (!oauth) return std::nullopt;
    const auto accessToken = oauth->text("accessToken");
    const auto subscriptionType = oauth->text("subscriptionType");
    const auto expiresAt = oauth->number("expiresAt");
    if (!accessToken || accessToken->empty() || document->hasMismatch()) return std::nullopt;
    return CredentialsFile{{*accessToken, subscriptionType, expiresAt}};
}

std::optional<ClaudeProvider::LiveUsage> ClaudeProvider::decodeUsage(std::string_view body) {
    const auto reply = JSONObject::parse(body);
    if (!reply) return std::nullopt;
    const LiveUsage usage{decodeWindow(reply->object("five_hour")),
                          decodeWindow(reply->object("seven_day"))};
    return reply->hasMismatch() ? std::nullopt : std::optional(usage);
}

void ClaudeProvider::fill(UsageSnapshot& snapshot, const LiveUsage& usage) {
    if (usage.five_hour) {
        snapshot.dailyPercent = usage.five_hour->utilization;
        snapshot.dailyResetAt = resetInstant(*usage.five_hour);
    }
    if (usage.seven_day) {
        snapshot.weeklyPercent = usage.seven_day->utilization;
        snapshot.weeklyResetAt = resetInstant(*usage.seven_day);
    }
}

std::optional<std::string> ClaudeProvider::modelIDInLog(std::string_view text) {
    return Text::fromLastLine(text, modelIDInLine);
}

std::optional<std::string> ClaudeProvider::currentModelID() {
    const auto path = LocalFiles::newestFile(logDirectory, logSuffix);
    if (!path) return std::nullopt;
    const auto end = LocalFiles::tail(*path, logTailBytes);
    return lastModel.update(*path, end ? modelIDInLog(*end) : std::nullopt);
}

std::optional<ClaudeProvider::OAuth> ClaudeProvider::readCredentials() {
    for (const char* path : credentialFiles) {
        const auto text = RegularFile::contents(HomeDirectory::expanding(path));
        if (const auto file = text ? decodeCredentials(*text) : std::nullopt)
            return file->claudeAiOauth;
    }
    const auto secret = Keychain::genericPassword(keychainService);
    const auto item = secret ? decodeCredentials(*secret) : std::nullopt;
    return item ? std::optional(item->claudeAiOauth) : std::nullopt;
}

/// The last login read. It is read again when it is about to expire, but not for a while after a
/// read that found none.
std::optional<ClaudeProvider::OAuth> ClaudeProvider::credentials() {
    const std::lock_guard guard(lock);
    const Instant now = Clock::now();
    if (cachedToken && cachedToken->expiresAt &&
        *cachedToken->expiresAt / 1000 > now + tokenReuseMargin) {
        return cachedToken;
    }
    if (lastFailedReadAt && now - *lastFailedReadAt < readBackOff) return cachedToken;

    if (const auto read = readCredentials()) {
        lastFailedReadAt.reset();
        cachedToken = read;
    } else {
        lastFailedReadAt = now;
    }
    return cachedToken;
}

UsageSnapshot ClaudeProvider::collect() const {
    UsageSnapshot snapshot(Provider::claude);
    snapshot.modelLabel = ModelNaming::displayModel(currentModelID());

    const auto login = credentials();
    if (!login) {
        snapshot.error = UsageSnapshot::loginRequired;
        return snapshot;
    }
    snapshot.connected = true;
    if (login->subscriptionType) snapshot.planLabel = Text::capitalized(*login->subscriptionType);

    const HTTP::Headers headers = {{"Authorization", "Bearer " + login->accessToken},
                                   {"anthropic-beta", "oauth-2025-04-20"},
                                   {"Accept", "application/json"}};
    const auto fillFrom = [](UsageSnapshot& current, std::string_view body) {
        const auto usage = decodeUsage(body);
        if (usage) fill(current, *usage);
        return usage.has_value();
    };
    const UsageEndpoint endpoint{usageURL, freshCacheAge, lock, liveCache};
    return endpoint.collect(std::move(snapshot), headers, fillFrom);
}
