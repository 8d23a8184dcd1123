#include <cmath>
#include <nlohmann/json.hpp>

#include "Fuzz.h"
#include "Providers/ClaudeProvider.h"
#include "Providers/CodexProvider.h"

namespace {

// The object without its closing brace, which is no JSON document.
std::string_view cut(std::string_view text) {
    return text.substr(0, text.find_last_of('}'));
}

void tryClaude(std::string_view text) {
    const auto file = ClaudeProvider::decodeCredentials(text);
    if (!file) return;
    const auto& login = file->claudeAiOauth;
    require(!login.accessToken.empty() && isUTF8(login.accessToken) &&
            isUTF8(login.subscriptionType.value_or("")));
    require(!login.expiresAt || std::isfinite(*login.expiresAt));
    require(!ClaudeProvider::decodeCredentials(cut(text)));

    nlohmann::json document = {{"accessToken", login.accessToken}, {"another", {1, "x"}}};
    if (login.subscriptionType) document["subscriptionType"] = *login.subscriptionType;
    if (login.expiresAt) document["expiresAt"] = *login.expiresAt;
    const auto again =
        ClaudeProvider::decodeCredentials(nlohmann::json{{"claudeAiOauth", document}}.dump());
    require(again && again->claudeAiOauth.accessToken == login.accessToken);
    require(again->claudeAiOauth.subscriptionType == login.subscriptionType);
    require(again->claudeAiOauth.expiresAt == login.expiresAt);
}

void tryCodex(std::string_view text) {
    const auto file = CodexProvider::decodeAuth(text);
    if (!file) return;
    require(!CodexProvider::decodeAuth(cut(text)));
    if (!file->tokens) return;
    require(isUTF8(file->tokens->access_token.value_or("")) &&
            isUTF8(file->tokens->account_id.value_or("")));

    nlohmann::json tokens = nlohmann::json::object();
    if (file->tokens->access_token) tokens["access_token"] = *file->tokens->access_token;
    if (file->tokens->account_id) tokens["account_id"] = *file->tokens->account_id;
    const auto again =
        CodexProvider::decodeAuth(nlohmann::json{{"another", nullptr}, {"tokens", tokens}}.dump());
    require(again && again->tokens && again->tokens->access_token == file->tokens->access_token);
    require(again->tokens->account_id == file->tokens->account_id);
}

}  // namespace

void tryInput(std::string_view text) {
    tryClaude(text);
    tryCodex(text);
}
