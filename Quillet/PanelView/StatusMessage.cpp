#include "PanelView/StatusMessage.h"

#include "Rendering/Palette.h"

namespace {

constexpr Color quiet = Color::white(0.4);

const char* signInHint(Provider provider) {
    switch (provider) {
    case Provider::claude:
        return "Run `claude` and sign in";
    case Provider::codex:
        return "Run `codex` and sign in";
    case Provider::gemini:
        return "Run `gemini` and sign in";
    case Provider::opencode:
        return "Run `opencode auth login`";
    }
    return "";
}

}  // namespace

StatusMessage StatusMessage::of(Provider provider, const std::optional<UsageSnapshot>& snapshot) {
    if (snapshot && snapshot->error)
        return {*snapshot->error, snapshot->connected ? quiet : Palette::orange};
    if (snapshot && snapshot->connected) return {"connected", quiet};
    return {signInHint(provider), quiet};
}
