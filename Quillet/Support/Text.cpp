#include "Support/Text.h"

#include <unictype.h>
#include <unistr.h>

#include <algorithm>
#include <cstdint>

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
bool isAny(ucs4_t c, std::uint32_t categories) {
    return uc_is_general_category_withtable(c, categories);
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

std::string Text::withoutControls(std::string_view text) {
    constexpr auto dividing = UC_CATEGORY_MASK_Cc | UC_CATEGORY_MASK_Zl | UC_CATEGORY_MASK_Zp;
    std::string result;
    while (!text.empty()) {
        ucs4_t c = 0;  // U+FFFD for what is not UTF-8
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        const auto length = static_cast<std::size_t>(u8_mbtouc(&c, bytes, text.size()));
        const bool isInvalid = c == 0xFFFD;
        if (isAny(c, dividing)) {
            result += ' ';
        } else if (!isAny(c, UC_CATEGORY_MASK_Cf)) {
            result += isInvalid ? "\uFFFD" : text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return result;
}
