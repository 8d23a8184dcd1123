#include "Providers/OpenCodeProvider.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <memory>
#include <regex>

#include "Tests/Support/ScopedClock.h"
#include "Tests/Support/TemporaryHome.h"

namespace {

const std::string schema = "CREATE TABLE message (time_created, data);";

using Tool = std::unique_ptr<FILE, decltype([](FILE* pipe) { pclose(pipe); })>;

/// OpenCode's own tool at work; it is killed with the object.
Tool start(const std::string& database, const std::string& sql, const std::string& loop = "") {
    const auto ready = TemporaryHome::beside("ready");
    setenv("SQL", sql.c_str(), 1);
    setenv("LOOP", loop.c_str(), 1);
    const auto command = "opencode-tool '" + database + "' \"$SQL\" " + ready + " \"$LOOP\"";
    Tool tool(popen(command.c_str(), "we"));
    for (int i = 0; i < 1000 && !std::filesystem::remove(ready); i++)
        usleep(10'000);
    return tool;
}

/// The sum, which must be the same for a user who owns none of the files.
std::string sumOf(const std::string& path) {
    std::string sums[2];
    for (auto& text : sums) {
        const auto before = TemporaryHome::tree();
        const auto sum = OpenCodeProvider::tokensInLastFiveHours(path);
        EXPECT_EQ(TemporaryHome::tree(), before);
        text = sum ? std::to_string(*sum) : "absent";
        EXPECT_EQ(seteuid(getuid() == 0 && geteuid() == 0 ? 65534 : getuid()), 0);
    }
    return sums[0] == sums[1] ? sums[0] : sums[0] + " or " + sums[1];
}

}  // namespace

TEST(OpenCodeTokens, AreOfTheWindowEvenWhileTheToolLocksItAndAHostileDatabaseCostsLittle) {
    ScopedClock clock(1'750'000'000.0004);
    // Milliseconds after the beginning of the window, and the message.
    const auto locked = [](const std::string& messages) {
        return schema + "INSERT INTO message SELECT column1 + 1749982000000, column2 FROM (VALUES" +
               messages + "); BEGIN EXCLUSIVE";
    };
    const std::pair<const char*, std::string> rows[] = {
        {"338", locked(R"((-1, '{"tokens": {"input": 1}}'), (-9000000, '{'),
            (0, '{"tokens": {"input": 7}}'), (0, '{"tokens": {"output": 10}}'), (0, '[]'),
            (0, '{"tokens": {"input": 1, "output": 20, "reasoning": 300, "cache": 9}}'),
            (0, '{"role": "user"}'), (0, '{"tokens": null}'), (0, '{"tokens": 7}'))")},
        {"absent", locked(R"((0, '{'), (0, '{"tokens": {"input": 5}}'))")},
        {"absent", locked(R"((0, '{"tokens": {"input": 9223372036854775807}}'),
            (0, '{"tokens": {"input": 1}}'))")},
        {"absent|0",  // newer versions need less memory for it
         locked("(0, '[1' || replace(hex(zeroblob(1900000)), '0', ',1') || ']')")},
        {"absent", locked("(0, '\"' || hex(zeroblob(4500000)) || '\"')")},
        {"absent", "CREATE VIEW message AS SELECT 9e15 time_created, '{\"tokens\": {}}' data"},
        {"absent", "CREATE VIRTUAL TABLE message USING fts5(time_created, data)"},
        {"absent",
         "CREATE TABLE message (time_created, text, DATA AS (text));"
         "INSERT INTO message(time_created, text) SELECT 9e15, 1"}};
    for (const auto& [sum, sql] : rows) {
        TemporaryHome home;
        const Tool tool = start(home.at("50%41?a#b.db"), sql);
        rusage before{}, after{};
        getrusage(RUSAGE_SELF, &before);
        alarm(8);
        EXPECT_TRUE(std::regex_match(sumOf("/" + home.at("/50%41?a#b.db")), std::regex(sum)))
            << sql;
        alarm(0);
        getrusage(RUSAGE_SELF, &after);
        constexpr long maxGrowth = 256 << 10;  // KiB, with a sanitizer's copy
        EXPECT_LT(after.ru_maxrss - before.ru_maxrss, maxGrowth) << sql;
    }
}

TEST(OpenCodeTokens, AReadIsOfOneMomentWhileTheToolWrites) {
    TemporaryHome home;
    const std::string set = "UPDATE message SET data = json_set(data, '$.tokens.input', ";
    const Tool tool = start(
        home.at("db"),
        "PRAGMA journal_mode = WAL; PRAGMA synchronous = OFF; PRAGMA wal_autocheckpoint = 20;" +
            schema +
            "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c WHERE i < 300)"
            "INSERT INTO message SELECT 9e15, json_object('x', hex(zeroblob(450)),"
            " 'tokens', json_object('input', iif(i = 1, 1000, 0))) FROM c",
        "BEGIN;" + set + "0) WHERE json_extract(data, '$.tokens.input') > 0;" + set +
            "1000) WHERE rowid = 1 + abs(random() % 300); COMMIT");
    int known = 0;
    for (int i = 0; i < 300; ++i) {
        const auto sum = OpenCodeProvider::tokensInLastFiveHours(home.at("db"));
        EXPECT_EQ(sum.value_or(1000), 1000);
        known += sum.has_value();
    }
    EXPECT_GT(known, 100);
}

TEST(OpenCodeTokens, AWriteAheadLogIsReadAndNoFileIsTouched) {
    ScopedClock clock(1'750'000'000);
    const auto sql = textOf(FIXTURES "/opencode-log.sql");  // 7 tokens and, in its log, 1
    const std::pair<const char*, const char*> crashes[] = {
        {"chown 1:1 db db-wal db-shm 2>&1 || true", "8"},
        {"rm db-wal db-shm; chmod 0555 .", "7"},
        {"rm db-shm; : > db-wal", "7"},
        {": > db", "absent"}};
    for (const auto& [crash, sum] : crashes) {
        TemporaryHome home;
        EXPECT_EQ(home.shell("ln -s db link; ln -s . here"), 0);
        {
            const Tool tool = start(home.at("db"), sql);
            for (const char* name : {"db", "here/link"})
                EXPECT_EQ(sumOf(home.at(name)), "8") << "in the middle of a transaction";
        }
        EXPECT_EQ(home.shell(crash), 0);
        EXPECT_EQ(sumOf(home.at("db")), sum) << crash;
        EXPECT_EQ(home.shell("chmod u+w ."), 0);  // else only root could remove it
    }
}
