#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Turns the assistants' model identifiers and effort words into the short labels that are shown.
namespace ModelNaming {

/// claude-opus-4-7 gives "Opus 4.7". Absent for an absent or empty identifier.
std::optional<std::string> displayModel(const std::optional<std::string>& model);

/// xhigh gives "Ultra". Absent for an absent or empty word.
std::optional<std::string> displayEffort(const std::optional<std::string>& effort);

/// Both labels with " · " between them, or the one that is present.
std::optional<std::string> combined(const std::optional<std::string>& model,
                                    const std::optional<std::string>& effort);

}  // namespace ModelNaming
