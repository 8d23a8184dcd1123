#pragma once

/// The lines of the table that are about the desktop half. The toolkit is in the programs that they
/// run.
namespace Pictures {

/// The whole command, offline.
void command();

/// All that a refresh draws. `verbose` prints what each part of it costs below.
void refresh(bool verbose);

}  // namespace Pictures
