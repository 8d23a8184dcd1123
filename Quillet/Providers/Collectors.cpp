#include "Providers/Collectors.h"

#include "Providers/ClaudeProvider.h"
#include "Providers/CodexProvider.h"
#include "Providers/GeminiProvider.h"
#include "Providers/OpenCodeProvider.h"

UsageSnapshot Collectors::collect(Provider provider) {
    switch (provider) {
    case Provider::claude:
        return ClaudeProvider().collect();
    case Provider::codex:
        return CodexProvider().collect();
    case Provider::gemini:
        return GeminiProvider().collect();
    case Provider::opencode:
        return OpenCodeProvider().collect();
    }
    return UsageSnapshot(provider);
}
