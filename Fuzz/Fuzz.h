#pragma once

#include <utf8.h>

#include <cstdlib>
#include <string_view>

/// Stops the fuzzer at an input that breaks a promise.
inline void require(bool promise) {
    if (!promise) std::abort();
}

inline bool isUTF8(std::string_view text) {
    return utf8::is_valid(text.begin(), text.end());
}

/// What a target tries with each input.
void tryInput(std::string_view text);
