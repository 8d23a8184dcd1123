// Codex's own tool keeps its token valid, so the login is read at every call and a sign-out shows
// at once. Only their lengths tell the reply's two windows apart: either may stand in either place.
#include "Providers/CodexProvider.h"

#include "Model/ModelNaming.h"
#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"
#include "Providers/UsageEndpoint.h"
#include "Support/JSON.h"
#include "Support/Text.h"

namespace {

constexpr const char* authPath = "~/.codex/auth.json";
constexpr const char* usageURL = "https://chatgpt.com/backend-api/wham/usage";
constexpr double freshCacheAge = 60;         // seconds
constexpr double maxShortWindow = 6 * 3600;  // seconds

std::optional<CodexProvider::APIWindow> decodeWindow(const std::optional<JSONObject>& object) {
    if (!object) return std::nullopt;
    return CodexProvider::APIWindow{
        object->number("used_percent"), object->number("limit_window_seconds"),
        object->number("reset_after_seconds"), object->number("reset_at")};
}

std::optional<Instant> resetInstant(const CodexProvider::APIWindow& window, Instant now) {
    if (window.reset_at) return window.reset_at;
    return window.reset_after_seconds ? std::optional(now + *window.reset_after_seconds)
                                      : std::nullopt;
}

void fillWindow(UsageSnapshot& snapshot, const std::optional<CodexProvider::APIWindow>& window,
                Instant now) {
    if (!window || !window->used_percent) return;
    const bool isShort =
        window->limit_window_seconds && *window->limit_window_seconds <= maxShortWindow;
    (isShort ? snapshot.dailyPercent : snapshot.weeklyPercent) = window->used_percent;
    (isShort ? snapshot.dailyResetAt : snapshot.weeklyResetAt) = resetInstant(*window, now);
}

}  // namespace

std::optional<CodexProvider::AuthFile> CodexProvider::decodeAuth(std::string_view text) {
    const auto document = JSONObject::parse(text);
    if (!document) return std::nullopt;
    AuthFile auth;
    if (const auto tokens = document->object("tokens")) {
        auth.tokens = {tokens->text("access_token"), tokens->text("account_id")};
    }
    return document->hasMismatch() ? std::nullopt : std::optional(auth);
}

std::optional<CodexProvider::APIUsage> CodexProvider::decodeUsage(std::string_view body) {
    const auto reply = JSONObject::parse(body);
    if (!reply) return std::nullopt;
    APIUsage usage;
    usage.plan_type = reply->text("plan_type");
    if (const auto limit = reply->object("rate_limit")) {
        usage.rate_limit = {decodeWindow(limit->object("primary_window")),
                            decodeWindow(limit->object("secondary_window"))};
    }
    return reply->hasMismatch() ? std::nullopt : std::optional(usage);
}

void CodexProvider::fill(UsageSnapshot& snapshot, const APIUsage& usage, Instant now) {
    if (usage.plan_type) snapshot.planLabel = Text::capitalized(*usage.plan_type);
    if (!usage.rate_limit) return;
    fillWindow(snapshot, usage.rate_limit->primary_window, now);
    fillWindow(snapshot, usage.rate_limit->secondary_window, now);
}

std::optional<CodexProvider::AuthFile> CodexProvider::readAuth() {
    const auto text = RegularFile::contents(HomeDirectory::expanding(authPath));
    return text ? decodeAuth(*text) : std::nullopt;
}

UsageSnapshot CodexProvider::collect() const {
    UsageSnapshot snapshot(Provider::codex);
    const ModelEffort setting = currentModelEffort();
    snapshot.modelLabel = ModelNaming::displayModel(setting.model);
    snapshot.effortLabel = ModelNaming::displayEffort(setting.effort);

    const auto auth = readAuth();
    if (!auth || !auth->tokens || auth->tokens->access_token.value_or("").empty()) {
        snapshot.error = UsageSnapshot::loginRequired;
        return snapshot;
    }
    snapshot.connected = true;

    HTTP::Headers headers = {{"Authorization", "Bearer " + *auth->tokens->access_token},
                             {"Accept", "application/json"},
                             {"User-Agent", QUILLET_USER_AGENT}};
    const auto& account = auth->tokens->account_id;
    if (account && !account->empty()) headers["ChatGPT-Account-Id"] = *account;
    const auto fillFrom = [](UsageSnapshot& current, std::string_view body) {
        const auto usage = decodeUsage(body);
        if (usage) fill(current, *usage, Clock::now());
        return usage.has_value();
    };
    const UsageEndpoint endpoint{usageURL, freshCacheAge, lock, liveCache};
    return endpoint.collect(std::move(snapshot), headers, fillFrom);
}
