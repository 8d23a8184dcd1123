#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The platform's secret store. Linux desktops have several and servers none, so no store is asked
/// here.
namespace Keychain {

/// The secret stored for `service`; absent where there is no such item or no store.
std::optional<std::string> genericPassword(std::string_view service);

using Lookup = std::optional<std::string> (*)(std::string_view service);

/// Replaces the store that is asked and returns the one before; nullptr stands for the platform's.
Lookup exchangeLookup(Lookup lookup);

}  // namespace Keychain
