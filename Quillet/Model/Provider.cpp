#include "Model/Provider.h"

std::string_view Provider::rawValue() const {
    switch (value) {
    case claude:
        return "Claude";
    case codex:
        return "Codex";
    case gemini:
        return "Gemini";
    case opencode:
        return "OpenCode";
    }
    return {};
}

std::optional<Provider> Provider::fromRawValue(std::string_view text) {
    for (const Provider provider : allCases()) {
        if (provider.rawValue() == text) return provider;
    }
    return std::nullopt;
}
