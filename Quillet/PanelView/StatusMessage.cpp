#include "PanelView/StatusMessage.h"

#include "Rendering/Palette.h"

StatusMessage StatusMessage::of(Provider provider, const std::optional<UsageSnapshot>& snapshot) {
    constexpr Color quiet = Color::white(0.4);
    if (snapshot && snapshot->error)
        return {*snapshot->error, snapshot->connected ? quiet : Palette::orange};
    if (snapshot && snapshot->connected) return {"connected", quiet};
    return {Palette::signInHint(provider), quiet};
}
