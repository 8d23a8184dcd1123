#include <string>

#include "Fuzz.h"
#include "Providers/CodexProvider.h"

namespace {

void requireValue(const std::optional<std::string>& value, std::string_view text) {
    if (!value) return;
    require(value->find('\n') == std::string::npos && text.find(*value) != std::string_view::npos);
    if (value->empty()) return;
    require(value->find_first_of("\"'") != 0 && value->find_last_of("\"'") != value->size() - 1);
}

}  // namespace

void tryInput(std::string_view input) {
    const std::string text(input);
    const auto set = CodexProvider::modelEffortInConfig(text);
    requireValue(set.model, text);
    requireValue(set.effort, text);

    // The last line of a key decides, and leaves the other key alone.
    const auto later = CodexProvider::modelEffortInConfig(text + "\n\t model = \"last\" \n");
    require(later.model == "last" && later.effort == set.effort);
    const auto earlier =
        CodexProvider::modelEffortInConfig("model_reasoning_effort='first'\n" + text);
    require(earlier.model == set.model && earlier.effort == set.effort.value_or("first"));
}
