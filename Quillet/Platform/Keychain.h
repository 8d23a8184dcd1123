#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The platform's secret store. On Linux, where desktops have several and servers none, no store is
/// asked.
namespace Keychain {

/// The secret stored for `service`; absent where there is no such item or no store.
std::optional<std::string> genericPassword(std::string_view service);

using Lookup = std::optional<std::string> (*)(std::string_view service);

/// Replaces the store and returns the one before; nullptr is the platform's.
Lookup exchangeLookup(Lookup lookup);

}  // namespace Keychain
