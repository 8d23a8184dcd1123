#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Model/UsageSnapshot.h"

/// OpenCode's use of the last five hours, summed from the message database of its own tool.
class OpenCodeProvider {
public:
    UsageSnapshot collect() const;

    /// Absent when the database can't be opened or queried at once, a writer's lock included.
    static std::optional<std::int64_t> tokensInLastFiveHours(const std::string& dbPath);
};
