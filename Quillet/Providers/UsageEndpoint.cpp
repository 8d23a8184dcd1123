#include "Providers/UsageEndpoint.h"

namespace {

constexpr double requestTimeout = 8;  // seconds
constexpr int statusOK = 200;

}  // namespace

UsageSnapshot UsageEndpoint::collect(UsageSnapshot current, const HTTP::Headers& headers,
                                     const Fill& fill) const {
    std::unique_lock guard(lock);
    auto last = cache;
    guard.unlock();
    if (last) {
        last->snapshot.modelLabel = current.modelLabel;
        last->snapshot.effortLabel = current.effortLabel;
    }
    if (last && Clock::now() - last->at < freshAge) {
        if (current.planLabel) last->snapshot.planLabel = current.planLabel;
        return last->snapshot;
    }

    const auto response = HTTP::get(url, headers, requestTimeout);
    if (!response || response->status != statusOK || !fill(current, response->data))
        return last ? last->snapshot : current;
    current.updatedAt = Clock::now();
    guard.lock();
    cache = {current, current.updatedAt};
    return current;
}
