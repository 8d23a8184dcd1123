#pragma once

#include <string>
#include <string_view>

/// Atomic writes: a file is there as a whole or not at all, whenever the program ends.
namespace WholeFile {

/// Whether to flush the bytes to the disk before the rename, in case the machine crashes.
enum class Flush { no, yes };

/// Replaces the file at `path`, or a link to a file or to nothing, through a temporary file in the
/// same directory. A replaced file of the user's own keeps its permissions. False if that failed or
/// there is something else, such as a device or a link to one; then nothing has changed.
bool write(const std::string& path, std::string_view bytes, Flush flush);

/// Removes what a program that was killed while it wrote `path` may have left.
void removeUnfinished(const std::string& path);

}  // namespace WholeFile
