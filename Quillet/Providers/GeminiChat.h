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

/// Of a chat's first line, which has some hundred.
inline constexpr std::size_t maxHeaderBytes = 1 << 14;

/// Whether a log that begins with `text` is a chat.
bool isBeginning(std::string_view text);

/// Counts the answers since `since` in the end of a chat, each id once. A cut first line doesn't
/// count.
std::int64_t answers(std::string_view text, Instant since);

/// The model of the newest answer that names one in the end of a chat.
std::optional<std::string> newestModel(std::string_view text);

}  // namespace GeminiChat
