#include "Support/Text.h"

#include <utf8.h>

#include <algorithm>

namespace {

// In some locales, std::tolower and its like change bytes of UTF-8 characters.
char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isControl(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == U'\u2028' || c == U'\u2029';
}

}  // namespace

std::vector<std::string_view> Text::split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        if (end > 0) parts.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

std::string Text::lowercased(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), lower);
    return result;
}

std::string Text::capitalized(std::string_view text) {
    std::string result(text);
    bool wordStarts = true;
    for (char& c : result) {
        c = wordStarts ? upper(c) : lower(c);
        wordStarts = isSpace(c);
    }
    return result;
}

std::string_view Text::trimmed(std::string_view text, std::string_view characters) {
    const std::size_t first = text.find_first_not_of(characters);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

std::string Text::replacing(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string Text::withoutControls(const std::string& text) {
    std::u32string characters = utf8::utf8to32(utf8::replace_invalid(text));
    std::ranges::replace_if(characters, isControl, U' ');
    return utf8::utf32to8(characters);
}
