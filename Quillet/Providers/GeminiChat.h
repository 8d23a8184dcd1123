#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Clock.h"

/// The chats that Gemini's tool keeps: a line of JSON that names the session, then a line for each
/// message.
namespace GeminiChat {

/// No chat's first line is longer; it has some hundred bytes.
inline constexpr std::size_t maxHeaderBytes = 1 << 14;

/// Whether a log that begins with `text` is a chat.
bool isBeginning(std::string_view text);

/// How many answers in the end of a chat were given at `since` or later. An answer that was written
/// again under the same id counts once, a first line that was cut not at all.
std::int64_t answers(std::string_view text, Instant since);

/// The model of the newest answer that names one in the end of a chat.
std::optional<std::string> newestModel(std::string_view text);

}  // namespace GeminiChat
