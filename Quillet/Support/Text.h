#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Operations on UTF-8 text that change ASCII letters alone, whatever the locale.
namespace Text {

/// The lines between line feeds without the empty ones. They point into `text`.
std::vector<std::string_view> lines(std::string_view text);

std::string lowercased(std::string_view text);

/// The first letter of each word in upper case, the rest in lower case. White space divides words;
/// a word that begins with a digit has no letter to raise.
std::string capitalized(std::string_view text);

/// `text` without the characters of `characters` at both ends.
std::string_view trimmed(std::string_view text, std::string_view characters);

/// `text` with every `from` replaced by `to`.
std::string replacing(std::string text, std::string_view from, std::string_view to);

}  // namespace Text
