#include "Model/ModelNaming.h"

#include "Support/Text.h"

namespace {

struct Name {
    std::string_view word;
    const char* label;
};

// The first word found anywhere in an identifier decides, so a longer one stands before its own
// beginning.
constexpr Name modelNames[] = {
    {"claude-fable-5", "Fable 5"},
    {"claude-opus-4-8", "Opus 4.8"},
    {"claude-opus-4-7", "Opus 4.7"},
    {"claude-opus-4-6", "Opus 4.6"},
    {"claude-sonnet-4-6", "Sonnet 4.6"},
    {"claude-haiku-4-5", "Haiku 4.5"},
    {"gpt-5.6-sol", "5.6-Sol"},
    {"gpt-5.6", "5.6"},
    {"gpt-5.5", "5.5"},
    {"gpt-5.1", "5.1"},
    {"gemini-3-pro", "Gemini 3 Pro"},
    {"gemini-3-flash", "Gemini 3 Flash"},
    {"gemini-3", "Gemini 3"},
    {"gemini-2.5-pro", "2.5 Pro"},
    {"gemini-2.5-flash", "2.5 Flash"},
    {"gemini-2.0-flash", "2.0 Flash"},
    {"gemini-exp", "Gemini Exp"},
};

constexpr Name effortNames[] = {
    {"ultra", "Ultra"}, {"xhigh", "Ultra"}, {"x-high", "Ultra"}, {"high", "High"},
    {"medium", "Med"},  {"low", "Low"},     {"max", "Max"},      {"maximum", "Max"},
};

/// For a model newer than the table: its identifier without the vendor's prefixes, as capitalized
/// words.
std::string derivedLabel(std::string identifier) {
    identifier = Text::replacing(std::move(identifier), "claude-", "");
    identifier = Text::replacing(std::move(identifier), "gpt-", "");
    identifier = Text::replacing(std::move(identifier), "gemini-", "Gemini ");
    identifier = Text::replacing(std::move(identifier), "models/", "");

    std::string label;
    for (const std::string_view piece : Text::split(identifier, '-')) {
        if (!label.empty()) label += ' ';
        label += Text::capitalized(piece);
    }
    return label;
}

}  // namespace

std::optional<std::string> ModelNaming::displayModel(const std::optional<std::string>& model) {
    if (!model || model->empty()) return std::nullopt;
    const std::string identifier = Text::replacing(Text::lowercased(*model), "_", "-");
    for (const auto& [word, label] : modelNames) {
        if (identifier.find(word) != std::string::npos) return label;
    }
    return derivedLabel(identifier);
}

std::optional<std::string> ModelNaming::displayEffort(const std::optional<std::string>& effort) {
    if (!effort || effort->empty()) return std::nullopt;
    const std::string lowercased = Text::lowercased(*effort);
    for (const auto& [word, label] : effortNames) {
        if (lowercased == word) return label;
    }
    return Text::capitalized(lowercased);
}

std::optional<std::string> ModelNaming::combined(const std::optional<std::string>& model,
                                                 const std::optional<std::string>& effort) {
    if (model && effort) return *model + " · " + *effort;
    return model ? model : effort;
}
