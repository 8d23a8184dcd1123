#include "Providers/Collectors.h"

#include "Providers/ClaudeProvider.h"
#include "Providers/CodexProvider.h"
#include "Providers/GeminiProvider.h"
#include "Providers/OpenCodeProvider.h"
#include "Support/Text.h"

namespace {

template <typename Collector>
UsageSnapshot collectWith() {
    return Collector().collect();
}

constexpr UsageSnapshot (*collectors[])() = {
    collectWith<ClaudeProvider>,
    collectWith<CodexProvider>,
    collectWith<GeminiProvider>,
    collectWith<OpenCodeProvider>,
};

}  // namespace

UsageSnapshot Collectors::collect(Provider provider) {
    UsageSnapshot snapshot = collectors[provider]();
    for (auto* label :
         {&snapshot.planLabel, &snapshot.modelLabel, &snapshot.effortLabel, &snapshot.error}) {
        if (*label) *label = Text::withoutControls(**label);
    }
    return snapshot;
}
