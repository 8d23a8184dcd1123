#pragma once

#include "Model/UsageSnapshot.h"

/// The table of collectors.
namespace Collectors {

/// Asks the provider's collector. Blocks on files and, for some, on the network; callable from any
/// thread.
UsageSnapshot collect(Provider provider);

}  // namespace Collectors
