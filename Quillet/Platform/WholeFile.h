#pragma once

#include <string>
#include <string_view>

/// Files that are there whole or not at all, whenever the program ends.
namespace WholeFile {

/// Whether the bytes are on the disk before the name is, which only matters when the machine itself
/// fails.
enum class Flush { no, yes };

/// Replaces what is at `path`, a link itself and not what it leads to, through a temporary file
/// beside it. False if that failed or no file stands there, but a device, say; then nothing has
/// changed and no temporary file is left.
bool write(const std::string& path, std::string_view bytes, Flush flush);

}  // namespace WholeFile
