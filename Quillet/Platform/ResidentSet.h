#pragma once

/// The part of this process's memory that is in the machine's.
namespace ResidentSet {

/// Takes out what the loader mapped and nobody changed: code, constants, tables. What is still
/// needed comes back as it is reached, from the system's cache of files; what only the start needed
/// stays away. Takes some milliseconds, on any thread. Without a readable /proc nothing happens.
void trim();

}  // namespace ResidentSet
