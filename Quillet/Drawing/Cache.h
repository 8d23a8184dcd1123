#pragma once

#include <QCache>

/// Most of what a refresh draws is as it was, so what takes long is kept. Main thread only.
namespace Cache {

/// The cache's value for `key`, else what `make` returns, which is kept at its `cost`.
template <class Key, class Value>
Value findOrMake(QCache<Key, Value>& cache, const Key& key, const auto& make, const auto& cost) {
    if (const Value* const known = cache.object(key)) return *known;
    Value value = make();
    cache.insert(key, new Value(value), cost(value));
    return value;
}

}  // namespace Cache
