#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Operations on UTF-8 strings. Letters other than ASCII stay as they are, whatever the locale.
namespace Text {

/// The part before the first separator, perhaps empty, which `text` loses with the separator.
std::string_view next(std::string_view& text, char separator);

/// The parts between the separators without the empty ones. They point into `text`.
std::vector<std::string_view> split(std::string_view text, char separator);

/// Calls `read` with each line, the last one first, until it gives a value; absent if none does.
template <typename Read>
auto fromLastLine(std::string_view text, Read read) -> decltype(read(text)) {
    const auto lines = split(text, '\n');
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (auto value = read(*line)) return value;
    }
    return {};
}

std::string lowercased(std::string_view text);

/// The first character of each word in upper case, the rest in lower case. White space divides
/// words.
std::string capitalized(std::string_view text);

/// `text` without the characters of `characters` at both ends.
std::string_view trimmed(std::string_view text, std::string_view characters);

/// `text` with every `from` replaced by `to`.
std::string replacing(std::string text, std::string_view from, std::string_view to);

/// `text` with a space for each control character and line or paragraph separator, and without
/// format characters such as the bidirectional ones. So it stays on one line, moves no terminal's
/// cursor and changes no order. What is not UTF-8 becomes U+FFFD.
std::string withoutControls(const std::string& text);

}  // namespace Text
