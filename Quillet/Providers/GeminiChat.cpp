// Some hundred chats may change in a day, and nearly all of a chat is the content of its messages.
// So only lines that contain the mark of an answer are read, and of those only the head, if it is
// exactly as the tool writes it.
#include "Providers/GeminiChat.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <memory_resource>
#include <unordered_set>

#include "Support/ISO8601.h"
#include "Support/JSON.h"
#include "Support/Text.h"

namespace {

constexpr std::string_view answerType = "gemini";
constexpr std::string_view answerMark = R"(gemini")";
constexpr std::string_view updateMark = R"({"$set")";  // of a line that may repeat all messages

/// The members that every message has.
struct Head {
    std::string_view id;
    std::string_view timestamp;
    std::string_view type;
};

/// Sets `string` to what follows `opening` up to the next quote, and moves `rest` behind that;
/// false if `rest` doesn't begin with `opening`.
bool takeString(std::string_view& rest, std::string_view opening, std::string_view& string) {
    if (!rest.starts_with(opening)) return false;
    rest.remove_prefix(opening.size());
    string = rest.substr(0, rest.find('"'));
    rest.remove_prefix(std::min(string.size() + 1, rest.size()));
    return true;
}

/// Absent if the line isn't exactly as the tool writes it.
std::optional<Head> headAsWritten(std::string_view line) {
    if (!line.ends_with('}')) return std::nullopt;  // still being written
    Head head;
    const bool matches = takeString(line, R"({"id":")", head.id) &&
                         takeString(line, R"(,"timestamp":")", head.timestamp) &&
                         takeString(line, R"(,"type":")", head.type);
    return matches ? std::optional(head) : std::nullopt;
}

/// The line as JSON if it is an answer.
std::optional<JSONObject> parsedAnswer(std::string_view line) {
    if (line.starts_with(updateMark) || line.find(answerMark) == std::string_view::npos)
        return std::nullopt;
    auto message = JSONObject::parse(line);
    return message && message->text("type") == answerType ? message : std::nullopt;
}

/// The line around the byte `at`. std::string_view would search backwards byte by byte.
std::string_view lineAround(std::string_view text, std::size_t at) {
    const auto* const lineFeed = static_cast<const char*>(memrchr(text.data(), '\n', at));
    const char* const begin = lineFeed ? lineFeed + 1 : text.data();
    return {begin, text.data() + std::min(text.find('\n', at), text.size())};
}

bool isSince(std::string_view timestamp, Instant since) {
    const auto given = ISO8601::parse(timestamp);
    return given && *given >= since;
}

}  // namespace

bool GeminiChat::isBeginning(std::string_view text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    const auto header = line.size() <= maxHeaderBytes ? JSONObject::parse(line) : std::nullopt;
    return header && header->text("sessionId") && header->text("projectHash");
}

std::int64_t GeminiChat::answers(std::string_view text, Instant since) {
    std::pmr::monotonic_buffer_resource memory;  // a heap allocation for each id takes longer
    std::pmr::unordered_set<std::string_view> ids(&memory);
    std::deque<std::string> parsedIDs;  // that `ids` refers to
    std::size_t end = 0;
    for (std::size_t at; (at = text.find(answerMark, end)) != std::string_view::npos;) {
        const std::string_view line = lineAround(text, at);
        end = static_cast<std::size_t>(line.end() - text.begin());
        // Whether the first line is whole or was cut, only a parser can tell.
        const auto head = line.begin() == text.begin() ? std::nullopt : headAsWritten(line);
        if (head) {
            if (head->type == answerType && isSince(head->timestamp, since)) ids.insert(head->id);
        } else if (const auto answer = parsedAnswer(line)) {
            if (isSince(answer->text("timestamp").value_or(""), since))
                ids.insert(parsedIDs.emplace_back(answer->text("id").value_or(std::string(line))));
        }
    }
    return static_cast<std::int64_t>(ids.size());
}

std::optional<std::string> GeminiChat::newestModel(std::string_view text) {
    return Text::fromLastLine(text, [](std::string_view line) {
        const auto answer = parsedAnswer(line);
        return answer ? answer->text("model") : std::nullopt;
    });
}
