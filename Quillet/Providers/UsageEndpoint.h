#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string_view>

#include "Model/UsageSnapshot.h"
#include "Support/HTTP.h"

/// A vendor's usage endpoint and the last good reply. While that is fresh it is shown without a
/// request; after a request that fails it is shown again at any age, with its own time.
struct UsageEndpoint {
    const char* url;
    double freshAge;                      ///< Seconds.
    std::mutex& lock;                     ///< Guards `cache`; not held during a request.
    std::optional<TimedSnapshot>& cache;  ///< Of the last good reply.

    /// Fills a snapshot from a reply's body; false, and nothing is filled, if that is unusable.
    using Fill = std::function<bool(UsageSnapshot&, std::string_view body)>;

    /// `current` is what is known without a reply. Its model and effort, which the user may change
    /// at any time, also replace those of a reply that is shown again. Its plan replaces only that
    /// of a fresh one.
    UsageSnapshot collect(UsageSnapshot current, const HTTP::Headers& headers,
                          const Fill& fill) const;
};
