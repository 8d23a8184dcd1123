#include "Model/Provider.h"

std::optional<Provider> Provider::fromRawValue(std::string_view text) {
    static_assert(std::size(rawValues) == allCases().size());
    for (const Provider provider : allCases()) {
        if (provider.rawValue() == text) return provider;
    }
    return std::nullopt;
}
