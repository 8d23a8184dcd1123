#pragma once

#include "Tests/Support/HTTPSServer.h"

/// The lines of the table that are about the running application.
namespace Desktop {

/// Start, memory, threads and CPU time, signed in everywhere, beside a bare Qt program with an icon
/// in the same tray.
void run(const HTTPSServer& server);

/// How long a refresh holds the main thread. `verbose` adds its median and its CPU time.
void refresh(bool verbose);

}  // namespace Desktop
