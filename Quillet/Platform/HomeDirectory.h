#pragma once

#include <string>
#include <string_view>

/// The user's home directory.
namespace HomeDirectory {

/// `HOME` if it is an absolute path, else the password database's; "/" if neither has one.
std::string path();

/// `path` with a leading "~" (alone or before a "/") replaced by the home directory.
std::string expanding(std::string_view path);

/// Replaces what `path` returns and returns the replacement before; an empty string restores the
/// system's.
std::string exchangeOverride(std::string path);

}  // namespace HomeDirectory
