#pragma once

/// The code of the program and of its libraries, as far as it stands in memory.
namespace LoadedCode {

/// Takes it out of the resident set. What still runs comes back as it is reached, from the system's cache of
/// files; what only the start needed stays away. Takes some milliseconds. Under a debugger nothing happens,
/// because the breakpoints would go with the code.
void release();

}  // namespace LoadedCode
