#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// Reads of regular files that never block: a FIFO, a socket, a device or a directory is absent.
namespace RegularFile {

/// No assistant's settings or credentials are larger.
inline constexpr std::size_t maxFileBytes = 64 << 20;

/// The whole file; absent if it is missing, unreadable, not a regular file or larger than
/// `maxFileBytes`.
std::optional<std::string> contents(const std::string& path);

/// The first `maxBytes` bytes of the file, or all of a shorter one. Absent as for `contents`, but
/// for the size.
std::optional<std::string> beginning(const std::string& path, std::size_t maxBytes);

/// The last `maxBytes` bytes likewise.
std::optional<std::string> ending(const std::string& path, std::size_t maxBytes);

}  // namespace RegularFile
