#include "Providers/OpenCodeProvider.h"

#include <sqlite3.h>
#include <unistd.h>

#include <csignal>

#include "Tests/Support/CollectorTest.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/Table.h"

namespace fs = std::filesystem;

namespace {
constexpr std::int64_t cutOff = (1'750'000'000 - 18'000) * 1000LL;
const std::string schema = "CREATE TABLE message (time_created INTEGER, data TEXT);";

/// A connection as OpenCode's own tool has it, after `sql`.
std::shared_ptr<sqlite3> opened(const std::string& path, const std::string& sql) {
    sqlite3* database = nullptr;
    sqlite3_open(path.c_str(), &database);
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    return {database, sqlite3_close};
}

std::string message(std::int64_t time, const std::string& data) {
    return "INSERT INTO message VALUES (" + std::to_string(time) + ", '" + data + "');";
}

std::string tokens(std::int64_t input) {
    return R"({"tokens":{"input":)" + std::to_string(input) + "}}";
}

/// The sum, and a complaint if reading it changed a file or made one.
std::string sumOf(const std::string& path) {
    const auto everything = [] {
        std::string all;
        for (const auto& file : fs::directory_iterator(TemporaryHome::path()))
            all += file.path().string() + textOf(file.path());
        return all;
    };
    const std::string before = everything();
    const auto sum = OpenCodeProvider::tokensInLastFiveHours(path);
    return (sum ? std::to_string(*sum) : "absent") + (everything() == before ? "" : ", a file changed");
}
}  // namespace

TEST(OpenCodeTokens, SumWhatTheMessagesOfTheWindowSay) {
    ScopedClock clock(1'750'000'000.0004);
    for (const auto& row : table("opencode-messages")) {
        TemporaryHome home;
        std::string messages;
        for (const auto& each : row[0])
            messages += message(cutOff + each[0].get<int>(), cellText(each[1]));
        opened(home.at("50%41?a#b.db"), schema + messages);
        EXPECT_EQ(sumOf(home.at("50%41?a#b.db")), row[1]) << row;
    }
}

TEST(OpenCodeTokens, AnUnusableDatabaseIsAbsentAndNeverWaitedFor) {
    TemporaryHome home;
    const auto locked = opened(home.at("locked"), schema + "BEGIN EXCLUSIVE");
    opened(home.at("other"), "CREATE TABLE messages (data TEXT)");
    home.write("cut", textOf(home.at("other")).substr(0, 1000));
    home.write("empty", "");
    for (const char* name : {"locked", "other", "cut", "empty", ".", "none"})
        EXPECT_EQ(sumOf(home.at(name)), "absent") << name;
    ASSERT_EQ(mkfifo(home.at("fifo").c_str(), 0600), 0);
    alarm(5);
    EXPECT_FALSE(OpenCodeProvider::tokensInLastFiveHours(home.at("fifo")));
}

TEST(OpenCodeTokens, AWriteAheadLogIsReadAndNoFileIsTouched) {
    ScopedClock clock(1'750'000'000);
    TemporaryHome home;
    const std::string path = home.at("db");
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t tool = fork();  // connections of one process share their locks and the log's index
    if (tool == 0) {
        const auto open = opened(path, "PRAGMA journal_mode=WAL;" + schema + message(cutOff, tokens(7)) +
                                           "BEGIN IMMEDIATE;" + message(cutOff, tokens(1000)));
        dprintf(ready[1], "!");
        for (;;)
            pause();
    }
    char signal = 0;
    ASSERT_EQ(read(ready[0], &signal, 1), 1);
    EXPECT_EQ(sumOf(path), "7") << "in the middle of a transaction";
    kill(tool, SIGKILL);
    waitpid(tool, nullptr, 0);
    EXPECT_EQ(sumOf(path), "7") << "after a crash";
    opened(path, "PRAGMA wal_checkpoint");
    chmod(home.path().c_str(), 0555);
    ASSERT_EQ(seteuid(getuid() == 0 ? 65534 : getuid()), 0);  // permissions don't bind root
    EXPECT_EQ(sumOf(path), "7") << "closed, in a folder that is read only";
    ASSERT_EQ(seteuid(getuid()), 0);
    chmod(home.path().c_str(), 0700);
}

TEST(OpenCodeProvider, ShowsTheShareOfTheBudget) {
    ScopedClock clock(1'750'000'000);
    TemporaryHome home;
    home.write(".local/share/opencode/log", "");
    const std::string database = home.at(".local/share/opencode/opencode.db");
    EXPECT_EQ(shown(OpenCodeProvider().collect()), "no|-|-|-|-|-|-|-|Login required");
    home.write(".local/share/opencode/auth.json", "not read");
    EXPECT_EQ(shown(OpenCodeProvider().collect()), "yes|-|-|-|-|-|-|-|-") << "no database";
    opened(database, schema);
    for (const auto& [count, percent] :
         {std::pair(0, "-"), {-5, "-"}, {30, "0.001"}, {1'500'000, "50"}, {4'000'000, "100"}}) {
        opened(database, "DELETE FROM message;" + message(cutOff, tokens(count)));
        EXPECT_EQ(shown(OpenCodeProvider().collect()), std::string("yes|-|-|-|") + percent + "|-|-|-|-");
    }
}
