#pragma once

#include "Model/UsageSnapshot.h"

/// The table of collectors.
namespace Collectors {

/// Asks the provider's collector. The strings of its snapshot come from files and replies; in the
/// one returned they hold no control characters. Blocks on files and, for some, on the network;
/// callable from any thread.
UsageSnapshot collect(Provider provider);

}  // namespace Collectors
