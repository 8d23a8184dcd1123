#include <string>

#include "Fuzz.h"
#include "Providers/ClaudeProvider.h"
#include "Providers/CodexProvider.h"
#include "Providers/GeminiChat.h"

namespace {

void tryClaude(const std::string& text) {
    const auto model = ClaudeProvider::modelIDInLog(text);
    if (model) {
        require(!model->empty() && *model != "<synthetic>" &&
                model->find_first_of("\"\n") == std::string::npos);
        require(text.find("\"model\":\"" + *model + '"') != std::string::npos);
    }
    // The newest line that names a model decides.
    require(ClaudeProvider::modelIDInLog(text + "\n{\"model\":\"newest\"}") == "newest");
    require(ClaudeProvider::modelIDInLog("{\"model\":\"oldest\"}\n" + text) ==
            model.value_or("oldest"));
}

void tryCodex(const std::string& text) {
    const std::string line =
        R"({"type":"turn_context","payload":{"model":"m","model_reasoning_effort":"e"}})";
    const auto turn = CodexProvider::modelEffortInLog(text);
    if (turn) {
        require(turn->model || turn->effort);
        require(isUTF8(turn->model.value_or("")) && isUTF8(turn->effort.value_or("")));
        require(text.find("\"turn_context\"") != std::string::npos);
    }
    const auto newest = CodexProvider::modelEffortInLog(text + '\n' + line);
    require(newest && newest->model == "m" && newest->effort == "e");
    const auto oldest = CodexProvider::modelEffortInLog(line + '\n' + text);
    require(oldest && oldest->model == (turn ? turn->model : "m") &&
            oldest->effort == (turn ? turn->effort : "e"));
}

void tryGemini(const std::string& text) {
    constexpr Instant since = 1749978000;
    const std::string line = R"({"id":"not in the text","timestamp":"2025-06-15T10:00:00.000Z",)"
                             R"("type":"gemini","model":"m"})";
    const auto answers = GeminiChat::answers(text, since);
    require(answers >= 0 && answers <= static_cast<std::int64_t>(text.size()));
    const bool isKnown = text.find("not in the text") != std::string::npos;
    require(isKnown || GeminiChat::answers(text + '\n' + line + '\n' + line, since) == answers + 1);
    require(GeminiChat::answers(text, since + 1e12) == 0);
    require(GeminiChat::newestModel(text + '\n' + line) == "m");
    require(GeminiChat::newestModel(line + '\n' + text) ==
            GeminiChat::newestModel(text).value_or("m"));
}

}  // namespace

void tryInput(std::string_view text) {
    tryClaude(std::string(text));
    tryCodex(std::string(text));
    tryGemini(std::string(text));
    GeminiChat::isBeginning(text);
}
