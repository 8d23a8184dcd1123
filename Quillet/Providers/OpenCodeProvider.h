#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Model/UsageSnapshot.h"

/// OpenCode's usage in the last five hours, summed from the message database of its tool.
class OpenCodeProvider {
public:
    UsageSnapshot collect() const;

    /// Absent when the database can't be queried at once, for example because it is locked.
    static std::optional<std::int64_t> tokensInLastFiveHours(const std::string& dbPath);
};
