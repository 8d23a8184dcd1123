#include "Platform/Keychain.h"

#include <atomic>

namespace {

std::optional<std::string> noStore(std::string_view) {
    return std::nullopt;
}

std::atomic<Keychain::Lookup> currentLookup = noStore;

}  // namespace

std::optional<std::string> Keychain::genericPassword(std::string_view service) {
    return currentLookup.load()(service);
}

Keychain::Lookup Keychain::exchangeLookup(Lookup lookup) {
    return currentLookup.exchange(lookup ? lookup : noStore);
}
