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

// Unicode 15's category Cf: bidirectional controls, zero-width spaces, tags and the like.
constexpr struct {
    char32_t first, last;
} formats[] = {{0xAD, 0xAD},       {0x600, 0x605},     {0x61C, 0x61C},     {0x6DD, 0x6DD},
               {0x70F, 0x70F},     {0x890, 0x891},     {0x8E2, 0x8E2},     {0x180E, 0x180E},
               {0x200B, 0x200F},   {0x202A, 0x202E},   {0x2060, 0x2064},   {0x2066, 0x206F},
               {0xFEFF, 0xFEFF},   {0xFFF9, 0xFFFB},   {0x110BD, 0x110BD}, {0x110CD, 0x110CD},
               {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0001, 0xE0001},
               {0xE0020, 0xE007F}};

bool isFormat(char32_t c) {
    return std::ranges::any_of(
        formats, [c](const auto& range) { return c >= range.first && c <= range.last; });
}

}  // namespace

std::string_view Text::next(std::string_view& text, char separator) {
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

std::vector<std::string_view> Text::split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::string_view part = next(text, separator);
        if (!part.empty()) parts.push_back(part);
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
    std::erase_if(characters, isFormat);
    return utf8::utf32to8(characters);
}
