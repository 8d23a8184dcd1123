#pragma once

#include "Tests/Support/HTTPSServer.h"

/// The lines of the table that are about the running application, signed in everywhere, beside a
/// bare program with an icon in the same tray.
namespace Desktop {

/// From its start to its icon, and what it holds and does while idle. `verbose` prints what kinds
/// of memory below.
void run(const HTTPSServer& server, bool verbose);

/// How long a refresh holds the main thread. `verbose` prints its median and the work in it, too.
void refresh(bool verbose);

}  // namespace Desktop
