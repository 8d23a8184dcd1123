#include "Data.h"

#include <sqlite3.h>

#include <cstdlib>
#include <ctime>

#include "Platform/Clock.h"
#include "Support/ISO8601.h"
#include "Support/Text.h"
#include "Tests/Support/TemporaryHome.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t tailSize = 256 << 10;

std::string message(int number) {
    return R"({"role":"assistant","modelID":"sonnet","providerID":"anthropic","mode":"build",)"
           R"("cost":0.0123,)"
           R"("path":{"cwd":"/home/user/project","root":"/home/user/project"},"tokens":{"input":)" +
           std::to_string(number % 40) + R"(,"output":)" + std::to_string(number % 17) +
           R"(,"reasoning":)" + std::to_string(number % 5) +
           R"(,"cache":{"read":20412,"write":311}},"finish":"stop"})";
}

std::string twoDigits(int number) {
    return std::to_string(100 + number).substr(1);
}

void execute(sqlite3* database, const char* statement) {
    if (sqlite3_exec(database, statement, nullptr, nullptr, nullptr) != SQLITE_OK) std::abort();
}

}  // namespace

std::string Data::log(std::size_t size) {
    static constexpr struct {
        const char* name;
        const char* detail;
    } events[] = {
        {"api", "request to the model, generateContent, 3 parts, user prompt with context"},
        {"tool", "read the file src/parser/expression.cpp from line 120 to line 260"},
        {"reply", "streamed 42 chunks, the answer refers to three earlier messages"},
        {"idle", "waiting for input, nothing to report, garbage collector ran twice"},
    };
    std::string text;
    for (int line = 0; text.size() < size; ++line) {
        const auto& [name, detail] = events[line % 4];
        text += R"({"time":"2025-06-01T12:)" + std::to_string(10 + line % 50) +
                R"(:00.000Z","event":")" + name + R"(","detail":")" + detail +
                R"(","session":"6f1d2c3b-9a58-4e47-8f00-1234567890ab","id":)" +
                std::to_string(line) + "}\n";
    }
    text.resize(size);
    return text;
}

std::string Data::chat(std::size_t size) {
    static constexpr const char* header =
        R"({"sessionId":"7a83a1b7","projectHash":"1101","kind":"main"})";
    static constexpr const char* turn =
        "\n"
        R"({"id":"6f1d2c3b-9a58-4e47-8f00-u-NUMBER","timestamp":"NOW","type":"user",)"
        R"("content":[{"text":"WORDS"}]})"
        "\n"
        R"({"$set":{"lastUpdated":"NOW"}})"
        "\n"
        R"({"id":"6f1d2c3b-9a58-4e47-8f00-a-NUMBER","timestamp":"NOW","type":"gemini",)"
        R"("content":"WORDS WORDS WORDS","thoughts":[],)"
        R"("tokens":{"input":1000,"output":50,"cached":200,"total":1070},"model":"gemini-3-pro"})";
    const std::string words =
        "The parser reads the request from line 120 on and calls generateContent with it.";
    const std::string now = ISO8601::format(Clock::now()).value_or("");
    const std::string filled = Text::replacing(Text::replacing(turn, "NOW", now), "WORDS", words);
    std::string text = header;
    for (int number = 0; text.size() < size; ++number)
        text += Text::replacing(filled, "NUMBER", std::to_string(number));
    text.resize(size);
    return text;
}

void Data::writeSparseLog(const std::string& file, std::size_t size) {
    const std::string path = TemporaryHome::write(file, "");
    fs::resize_file(path, size);
    std::ofstream(path, std::ios::binary | std::ios::app) << log(tailSize);
}

void Data::writeTree(const std::string& root) {
    for (int directory = 0; directory < 500; ++directory) {
        const std::string path =
            TemporaryHome::at(root + "/project-" + std::to_string(directory / 20) + "/week-" +
                              std::to_string(directory % 20) + "/");
        fs::create_directories(path);
        for (int file = 0; file < 200; ++file)
            std::ofstream(path + "session-" + std::to_string(file) + ".jsonl");
    }
    TemporaryHome::write(root + "/project-12/week-7/session-100.jsonl", "",
                         std::time(nullptr) + 60);
}

void Data::writeDatabase(const std::string& file, int messages) {
    sqlite3* database = nullptr;
    sqlite3_open(TemporaryHome::write(file, "").c_str(), &database);
    execute(database,
            "CREATE TABLE message (id TEXT PRIMARY KEY, session_id TEXT NOT NULL, "
            "time_created INTEGER NOT NULL, time_updated INTEGER NOT NULL, data TEXT NOT NULL)");
    execute(database, "BEGIN");
    const char* row = "INSERT INTO message VALUES ('msg_' || ?1, 'ses_' || (?1 / 50), ?2, ?2, ?3)";
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(database, row, -1, &insert, nullptr);
    const auto now = static_cast<sqlite3_int64>(std::time(nullptr)) * 1000;
    for (int number = 0; number < messages; ++number) {
        const std::string data = message(number);
        sqlite3_bind_int(insert, 1, number);
        sqlite3_bind_int64(insert, 2, now - number);
        sqlite3_bind_text(insert, 3, data.c_str(), -1, SQLITE_TRANSIENT);
        if (sqlite3_step(insert) != SQLITE_DONE) std::abort();
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    execute(database, "COMMIT");
    sqlite3_close(database);
}

void Data::writeAssistants() {
    const std::string lines = log(tailSize);
    const std::string turn =
        R"({"type":"turn_context","payload":{"model":"gpt-5.5","model_reasoning_effort":"high"}})";
    TemporaryHome::write(".claude/projects/-home-user/0b5c.jsonl",
                         lines + "\n{\"model\":\"claude-opus-4-7\"}\n");
    TemporaryHome::write(".codex/sessions/2025/06/01/rollout.jsonl", lines + "\n" + turn + "\n");
    TemporaryHome::write(".gemini/oauth_creds.json", "{}");
    TemporaryHome::write(".gemini/settings.json", R"({"model":"gemini-2.5-pro"})");
    TemporaryHome::write(".gemini/tmp/session/logs.jsonl", lines);
    TemporaryHome::write(".local/share/opencode/auth.json", "{}");
    writeDatabase(".local/share/opencode/opencode.db", 200);
}

void Data::writeSessions() {
    const std::string lines = log(4 << 10);
    const Instant modifiedAt = Clock::now() - 86400;
    for (int number = 0; number < 2500; ++number) {
        const std::string name = std::to_string(number) + ".jsonl";
        const std::string project = std::to_string(number / 50);
        const std::string day = twoDigits(1 + number / 250) + "/" + twoDigits(1 + number % 25);
        for (const std::string& directory :
             {".claude/projects/-home-user-" + project + "/", ".codex/sessions/2025/" + day + "/"})
            TemporaryHome::write(directory + name, lines, modifiedAt);
    }
}

void Data::writeLogins() {
    const char* claude =
        R"({"claudeAiOauth":{"accessToken":"invented","subscriptionType":"max","expiresAt":4e12}})";
    TemporaryHome::write(".claude/.credentials.json", claude);
    TemporaryHome::write(".codex/auth.json", R"({"tokens":{"access_token":"invented"}})");
}
