#include "Providers/Collectors.h"

#include "Providers/ClaudeProvider.h"
#include "Providers/CodexProvider.h"
#include "Providers/GeminiProvider.h"
#include "Providers/OpenCodeProvider.h"
#include "Support/Text.h"

namespace {

constexpr UsageSnapshot (*collectors[])() = {
    [] { return ClaudeProvider().collect(); },
    [] { return CodexProvider().collect(); },
    [] { return GeminiProvider().collect(); },
    [] { return OpenCodeProvider().collect(); },
};
static_assert(std::size(collectors) == Provider::allCases().size());

}  // namespace

UsageSnapshot Collectors::collect(Provider provider) {
    UsageSnapshot snapshot = collectors[provider]();
    for (auto* label :
         {&snapshot.planLabel, &snapshot.modelLabel, &snapshot.effortLabel, &snapshot.error}) {
        if (*label) *label = Text::withoutControls(**label);
    }
    return snapshot;
}
