#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// One of the four supported assistants. Declaration order is the order in which they are listed.
class Provider {
public:
    enum Case : std::uint8_t { claude, codex, gemini, opencode };

    constexpr Provider(Case value) : value(value) {}
    constexpr operator Case() const { return value; }

    static constexpr std::array<Provider, 4> allCases() {
        return {claude, codex, gemini, opencode};
    }

    /// The name as users see it, for example "OpenCode".
    constexpr std::string_view rawValue() const { return rawValues[value]; }

    /// Exact match only, case included.
    static std::optional<Provider> fromRawValue(std::string_view text);

private:
    static constexpr std::string_view rawValues[] = {"Claude", "Codex", "Gemini", "OpenCode"};

    Case value;
};
