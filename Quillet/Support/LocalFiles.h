#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Clock.h"

/// Reads of the assistants' logs. Nothing is written, locked or waited for.
namespace LocalFiles {

/// Path of the most recently modified regular file below `under` (a leading "~" is expanded) whose
/// path ends with `suffix`. Hidden files and directories are skipped, links are not followed.
/// Absent if there is none.
std::optional<std::string> newestFile(std::string_view under, std::string_view suffix);

/// The last `maxBytes` bytes of the file, which may begin within a line. Absent if it can't be
/// read, isn't a regular file, or these bytes aren't UTF-8.
std::optional<std::string> tail(const std::string& of, std::size_t maxBytes);

/// The whole file; absent as for `tail`.
std::optional<std::string> text(const std::string& of);

/// Whether there is a file or directory at `path`.
bool exists(const std::string& path);

enum class Hidden { skip, include };

/// Calls `visit` for every regular file below `directory` whose name `matches`. Links are not
/// followed, unreadable directories are skipped.
void forEachFile(const std::string& directory, Hidden hidden,
                 const std::function<bool(std::string_view)>& matches,
                 const std::function<void(const std::string& directory, const char* name,
                                          Instant modifiedAt)>& visit);

}  // namespace LocalFiles
