#pragma once

#include <string>
#include <string_view>

/// Atomic writes: a file is there as a whole or not at all, whenever the program ends.
namespace WholeFile {

/// Whether to flush the bytes to the disk before the rename, in case the machine crashes.
enum class Flush { no, yes };

/// Replaces the file at `path`, or the link itself, through a temporary file in the same directory.
/// False if that failed or there is something else, such as a device; then nothing has changed and
/// no temporary file is left.
bool write(const std::string& path, std::string_view bytes, Flush flush);

}  // namespace WholeFile
