#pragma once

#include <string>

#include "Model/UsageSnapshot.h"
#include "Providers/LastReading.h"

/// Gemini's login, model, plan and the number of requests logged today, all from its tool's own
/// directory. The vendor reports no percentages; the count stands in the snapshot's `error` while
/// it is connected. Any thread may use it.
class GeminiProvider {
public:
    UsageSnapshot collect() const;

private:
    static inline LastReading<std::string> lastModel;
};
