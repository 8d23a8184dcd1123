#pragma once

/// The lines of the table that are about drawing. Qt is only in the programs that they run.
namespace Pictures {

/// `quillet panel`, offline.
void command();

/// All that a refresh draws. `verbose` adds what each part costs.
void refresh(bool verbose);

}  // namespace Pictures
