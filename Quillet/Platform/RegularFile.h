#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// Reads of regular files that never wait: a FIFO, a socket, a device or a directory in a file's
/// place is absent. Not for the kernel's own files, whose size is made up.
namespace RegularFile {

/// Larger files are not settings or credentials of any assistant; parsed, they could take fifty
/// times their size.
inline constexpr std::size_t largestWhole = 1 << 20;  // bytes

/// The whole file; absent if it is missing, unreadable, not a regular file or larger than
/// `largestWhole`.
std::optional<std::string> contents(const std::string& path);

/// The first `maxBytes` bytes of the file, all of it if it is shorter; absent as for `contents`,
/// whatever its size.
std::optional<std::string> beginning(const std::string& path, std::size_t maxBytes);

/// The last `maxBytes` bytes in the same way.
std::optional<std::string> ending(const std::string& path, std::size_t maxBytes);

}  // namespace RegularFile
