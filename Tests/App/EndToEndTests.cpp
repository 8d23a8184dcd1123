#include <gtest/gtest.h>
#include <sqlite3.h>

#include <ctime>
#include <regex>

#include "Tests/Support/HTTPSServer.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/Scenario.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr auto databaseFile = ".local/share/opencode/opencode.db";

/// The text with every IN-n replaced by the date-time n seconds after `now`.
std::string withTimes(std::string text, time_t now) {
    for (std::smatch found; std::regex_search(text, found, std::regex("IN-(\\d+)"));) {
        const time_t instant = now + std::stol(found[1]);
        char written[32];
        strftime(written, sizeof written, "%Y-%m-%dT%H:%M:%SZ", gmtime(&instant));
        text = found.prefix().str() + written + found.suffix().str();
    }
    return text;
}

/// The built program over a home directory with all four assistants in it.
class Quillet : public testing::Test {
protected:
    Quillet() {
        fs::copy(FIXTURES "/home", TemporaryHome::path(), fs::copy_options::recursive);
        makeDatabase("DELETE");
    }

    static void makeDatabase(const std::string& journalMode) {
        fs::remove(TemporaryHome::at(databaseFile));
        sqlite3* database = nullptr;
        sqlite3_open(TemporaryHome::at(databaseFile).c_str(), &database);
        const auto sql = "PRAGMA journal_mode=" + journalMode + ";" + textOf(FIXTURES "/opencode.sql");
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }

    static ProcessResult quillet(const std::vector<std::string>& arguments,
                                 std::vector<std::string> environment = {},
                                 std::vector<std::string> command = {}) {
        if (environment.empty()) environment = {"HOME=" + TemporaryHome::path()};
        environment.insert(environment.begin(),
                           {"https_proxy=http://127.0.0.1:1", "PATH=" + std::string(getenv("PATH"))});
        command.push_back(QUILLET);
        command.insert(command.end(), arguments.begin(), arguments.end());
        auto result = run(command, environment);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ((result.out + result.err).find("secret-"), std::string::npos) << "a token shows";
        return result;
    }

    /// The rows of the JSON report without the time, which differs between any two of them.
    static json rows(const std::vector<std::string>& environment = {}) {
        const auto result = quillet({"status", "--json"}, environment);
        EXPECT_EQ(result.err, "");
        auto report = json::parse(result.out, nullptr, false);
        if (!report.is_array() || report.size() != 4) throw std::runtime_error("no report: " + result.out);
        for (auto& row : report)
            row.erase("updatedAt");
        return report;
    }

    /// Everything in the home directory with all that a write of any kind would change.
    static std::string tree() {
        const auto script =
            R"(find "$0" -printf "%p %i %M %s %T@ %C@\n" | sort; find "$0" -type f -exec cat {} +)";
        return run({"sh", "-c", script, TemporaryHome::path()}, {}).out;
    }

    TemporaryHome home;
};

TEST_F(Quillet, ReportsAllFourAssistants) {
    const HTTPSServer server;
    // The program trusts the system's authorities only, so ours takes their place where only the child sees it.
    const std::vector<std::string> inNamespace = {
        "unshare",
        geteuid() == 0 ? "-m" : "-rm",
        "sh",
        "-c",
        R"(mount --bind "$0" /etc/ssl/certs/ca-certificates.crt && exec "$@")",
        server.certificates()};
    auto probe = inNamespace;
    probe.push_back("true");
    if (const auto result = run(probe, {}); result.status != 0)
        GTEST_SKIP() << "no mount namespace: " << result.err;

    const time_t now = time(nullptr);
    auto replies = json::parse(withTimes(textOf(FIXTURES "/usage-replies.json"), now));
    for (auto& window : replies["/backend-api/wham/usage"]["rate_limit"])
        window["reset_at"] = window["reset_at"].get<time_t>() + now;
    for (const auto& [path, body] : replies.items())
        server.reply(path, {{"body", body.dump()}});

    const auto before = tree(), keys = TemporaryHome::path() + ".keys";
    const std::vector<std::string> environment = {"HOME=" + TemporaryHome::path(), "SSLKEYLOGFILE=" + keys,
                                                  "https_proxy=http://" + server.address()};
    EXPECT_EQ(quillet({"status"}, environment, inNamespace).out, textOf(FIXTURES "/status.txt"));
    const auto report = quillet({"status", "--json"}, environment, inNamespace).out;
    EXPECT_EQ(std::regex_replace(report, std::regex(R"((updatedAt" : ")[-\dT:]{19}Z")"), "$1MASKED\""),
              withTimes(textOf(FIXTURES "/status.json"), now));
    EXPECT_EQ(server.lastFields()[1], json({"Authorization", "Bearer secret-codex-token"}));
    EXPECT_EQ(tree(), before);
    EXPECT_FALSE(fs::exists(keys)) << "the keys of the connection were written down";
}

TEST_F(Quillet, LeavesNothingBesideADatabaseWithAWriteAheadLog) {
    makeDatabase("WAL");
    const auto before = tree();
    EXPECT_EQ(rows()[3]["dailyPercent"], 50);
    EXPECT_EQ(tree(), before);
    EXPECT_NE(before.find("opencode.db"), before.npos);
}

TEST_F(Quillet, TheFirstArgumentIsTheCommand) {
    fs::remove_all(TemporaryHome::path());
    TemporaryHome::write(".config/quillet/config.json",
                         R"({"providers":[{"id":"codex"},{"id":"CLAUDE","enabled":0},{"id":"Codex"}]})");
    const auto lists = Scenario::load("commands.json");
    for (const auto& row : lists[0].steps) {
        SCOPED_TRACE(row["arguments"].dump());
        const auto result = quillet(row["arguments"]);
        EXPECT_EQ(result.out, row["out"]);
        EXPECT_EQ(std::ranges::count(result.err, '\n'), row["err"]) << result.err;
    }
    EXPECT_TRUE(json::parse(quillet({"status", "x", "--json"}).out)[3].contains("updatedAt"));
}

TEST_F(Quillet, HomeIsAnAbsolutePathOrTheUserDatabases) {
    const auto usual = rows(), unset = rows({"UNRELATED=1"});
    EXPECT_EQ(usual[0]["model"], "Opus 4.7");
    EXPECT_EQ(rows({"HOME="}), unset);
    EXPECT_EQ(rows({"HOME=" + fs::relative(TemporaryHome::path()).string()}), unset);
    EXPECT_EQ(rows({"HOME=/nowhere"})[3]["error"], "Not installed");
    fs::permissions(TemporaryHome::path(), fs::perms::owner_write, fs::perm_options::remove);
    EXPECT_EQ(rows(), usual);
    fs::permissions(TemporaryHome::path(), fs::perms::owner_write, fs::perm_options::add);
}

TEST_F(Quillet, OneBadFileSpoilsNoOtherProvider) {
    const auto lists = Scenario::load("bad-files.json");  // "files" and "kinds"
    const auto usual = rows();
    EXPECT_EQ(usual[3]["dailyPercent"], 50);
    for (const auto& file : lists[0].steps) {
        TemporaryHome::write(file["path"].get<std::string>() + ".beside", "");  // makes the folder
        const auto original = TemporaryHome::at(file["path"]), saved = TemporaryHome::path() + ".saved";
        const bool exists = fs::exists(original);
        if (exists) fs::rename(original, saved);
        for (const auto& kind : lists[1].steps) {
            SCOPED_TRACE(kind["what"].dump() + file["path"].dump());
            EXPECT_EQ(setenv("FILE", original.c_str(), 1) + std::system(kind["make"].get<std::string>().c_str()),
                      0);
            const auto begin = std::chrono::steady_clock::now();
            auto found = rows();
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
            if (file["row"] < 4) found[file["row"].get<std::size_t>()] = usual[file["row"].get<std::size_t>()];
            EXPECT_EQ(found, usual);
            fs::remove_all(original);
        }
        if (exists) fs::rename(saved, original);
    }
}

}  // namespace
