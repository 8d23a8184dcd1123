#pragma once

#include <string>
#include <string_view>

/// The user's home directory.
namespace HomeDirectory {

/// `HOME` if it is an absolute path, else what the password database says; "/" if neither knows
/// one.
std::string path();

/// `path` with a leading "~" (alone or before a "/") replaced by the home directory.
std::string expanding(std::string_view path);

/// Replaces the answer of `path`, an empty text restoring the system's, and returns the replacement
/// before.
std::string exchangeOverride(std::string path);

}  // namespace HomeDirectory
