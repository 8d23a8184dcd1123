#pragma once

#include <optional>
#include <string>

#include "Drawing/Color.h"
#include "Model/UsageSnapshot.h"

/// What the panel's row says in the gauges' place while there are no percentages.
struct StatusMessage {
    std::string text;
    Color color;

    static StatusMessage of(Provider provider, const std::optional<UsageSnapshot>& snapshot);
};
