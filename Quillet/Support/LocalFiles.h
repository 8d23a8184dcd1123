#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Clock.h"

/// Reads of the logs that the assistants keep in folder trees. Nothing is written, locked or waited
/// for.
namespace LocalFiles {

/// Path of the most recently modified regular file below `under` (a leading "~" is expanded) whose
/// path ends with `suffix`. Hidden files and folders are passed over, links are not followed.
/// Absent if there is none.
std::optional<std::string> newestFile(std::string_view under, std::string_view suffix);

/// The last `maxBytes` bytes of the file as text, its first line probably cut. Absent if it can't
/// be read, isn't a regular file, or isn't UTF-8 from the cut on.
std::optional<std::string> tail(const std::string& of, std::size_t maxBytes);

/// The whole file as text; absent as for `tail`.
std::optional<std::string> text(const std::string& of);

/// Whether there is anything at `path`, a folder too.
bool exists(const std::string& path);

enum class Hidden { skip, include };

/// Calls `visit` with folder, name and modification time of every regular file below `directory`
/// whose name `matches`. Links are not followed; folders that can't be read are passed over. Only
/// matching names cost a look at the file.
void forEachFile(const std::string& directory, Hidden hidden,
                 const std::function<bool(std::string_view)>& matches,
                 const std::function<void(const std::string& folder, const char* name,
                                          Instant modifiedAt)>& visit);

}  // namespace LocalFiles
