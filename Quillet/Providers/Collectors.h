#pragma once

#include "Model/UsageSnapshot.h"

/// The table of collectors.
namespace Collectors {

/// Asks the provider's collector, and removes control characters from the strings of its snapshot.
/// Blocks on files and, for some providers, on the network. Any thread may call it.
UsageSnapshot collect(Provider provider);

}  // namespace Collectors
