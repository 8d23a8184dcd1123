#pragma once

#include <QCache>

/// Refreshes draw mostly the same again, so what took long is kept. For the main thread, as all
/// drawing.
namespace Cache {

/// The cache's value for `key`; if it has none, what `make` returns, put there at the `cost` of
/// that.
template <class Key, class Value>
Value findOrMake(QCache<Key, Value>& cache, const Key& key, const auto& make, const auto& cost) {
    if (const Value* const known = cache.object(key)) return *known;
    Value value = make();
    cache.insert(key, new Value(value), cost(value));
    return value;
}

}  // namespace Cache
