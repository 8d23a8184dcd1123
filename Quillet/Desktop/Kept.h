#pragma once

#include <QCache>

/// The cache's value for `key`; if it has none, what `make` returns, kept there at the `cost` of that. Refreshes
/// draw mostly the same again. For the main thread, as all drawing.
template <class Key, class Value>
Value kept(QCache<Key, Value>& cache, const Key& key, const auto& make, const auto& cost) {
    if (const Value* const known = cache.object(key)) return *known;
    Value value = make();
    cache.insert(key, new Value(value), cost(value));
    return value;
}
