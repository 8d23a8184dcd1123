#include <gtest/gtest.h>

#include <ctime>
#include <regex>

#include "Tests/Support/Fixture.h"
#include "Tests/Support/HTTPSServer.h"

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
        const auto sql =
            "\"PRAGMA journal_mode=" + journalMode + "; $(cat '" FIXTURES "/opencode.sql')\"";
        EXPECT_EQ(
            TemporaryHome::shell("rm -f db; opencode-tool db " + sql + " && mv db " + databaseFile),
            0);
    }

    /// What a shell's command prints on both its outputs, with just this environment, no input and
    /// at most 20 seconds. "quillet" is the built program, for which the network ends at a proxy
    /// that isn't there.
    static std::pair<std::string, std::string> output(const std::string& command,
                                                      const std::string& environment = "") {
        const auto out = TemporaryHome::beside("out"), err = TemporaryHome::beside("err");
        const auto noon =
            std::to_string(time(nullptr) / 3600 % 24 - 12);  // no midnight comes between two runs
        const auto given = "env -i TZ=AAA" + noon + " https_proxy=http://127.0.0.1:1 HOME='" +
                           TemporaryHome::path() + "' PATH='" +
                           fs::path(QUILLET).parent_path().string() + ":" + getenv("PATH") + "' ";
        const auto streams = " < /dev/null > " + out + " 2> " + err;
        EXPECT_EQ(
            TemporaryHome::shell(given + environment + " timeout -k 1 20 " + command + streams), 0)
            << textOf(err);
        EXPECT_EQ((textOf(out) + textOf(err)).find("secret-"), std::string::npos)
            << "a token shows";
        return {textOf(out), textOf(err)};
    }

    /// The rows of the JSON report without the time, which differs between any two of them.
    static json rows(const std::string& environment = "", const std::string& command = "quillet") {
        const auto [out, err] = output(command + " status --json", environment);
        EXPECT_EQ(err, "");
        auto report = json::parse(out, nullptr, false);
        if (!report.is_array() || report.size() != 4) throw std::runtime_error("no report: " + out);
        for (auto& row : report)
            row.erase("updatedAt");
        return report;
    }

    TemporaryHome home;
};

TEST_F(Quillet, ReportsAllFourAssistants) {
    const HTTPSServer server;
    // The program trusts the system's authorities only, so ours take their place where only the
    // child sees it.
    const std::string namespaces = geteuid() == 0 ? "unshare -m " : "unshare -rm ";
    const auto command =
        namespaces +
        R"(sh -c 'mount --bind "$0" /etc/ssl/certs/ca-certificates.crt && quillet "$@"' )" +
        server.certificates();
    if (home.shell(namespaces + "true") != 0) GTEST_SKIP() << "no namespaces";

    const time_t now = time(nullptr);
    auto replies = json::parse(withTimes(textOf(FIXTURES "/usage-replies.json"), now));
    for (auto& window : replies["/backend-api/wham/usage"]["rate_limit"])
        window["reset_at"] = window["reset_at"].get<time_t>() + now;
    for (const auto& [path, body] : replies.items())
        server.reply(path, {{"body", body}});

    const auto before = home.tree();
    const auto keys = home.beside("keys");
    const auto environment = "SSLKEYLOGFILE=" + keys +
                             " OPENSSL_CONF='" FIXTURES "/openssl.cnf' https_proxy=http://" +
                             server.address();
    EXPECT_EQ(output(command + " status", environment).first, textOf(FIXTURES "/status.txt"));
    const auto report = output(command + " status --json", environment).first;
    EXPECT_EQ(
        std::regex_replace(report, std::regex(R"((updatedAt" : ")[-\dT:]{19}Z")"), "$1MASKED\""),
        withTimes(textOf(FIXTURES "/status.json"), now));
    EXPECT_EQ(server.seen()["sent"][1], json({"Authorization", "Bearer secret-codex-token"}));
    EXPECT_EQ(home.tree(), before);
    EXPECT_FALSE(fs::exists(keys)) << "the keys of the connection were written down";
}

TEST_F(Quillet, TheFirstArgumentIsTheCommand) {
    EXPECT_EQ(home.shell("rm -r .[a-z]*"), 0);
    home.write(".config/quillet/config.json",
               R"({"providers":[{"id":"codex"},{"id":"CLAUDE","enabled":0},{"id":"Codex"}]})");
    for (const auto& row : fixture("tables/commands")) {
        const auto [out, err] = output(row[0]);
        const auto expected =
            std::regex_replace(row[1].get<std::string>(), std::regex("VERSION"), QUILLET_VERSION);
        EXPECT_EQ(out, expected) << row[0];
        EXPECT_EQ(std::ranges::count(err, '\n'), row[2]) << row[0] << err;
    }
    EXPECT_TRUE(json::parse(output("quillet status x --json").first)[3].contains("updatedAt"));
}

TEST_F(Quillet, ShowsTheSameWhereverItRuns) {
    const auto usual = rows();
    EXPECT_EQ(usual[0]["model"], "Opus 4.7");
    EXPECT_EQ(rows("HOME=/nowhere")[3]["error"], "Not installed");
    EXPECT_EQ(rows("HOME=/" + home.path()), usual);
    EXPECT_EQ(home.shell("chmod a-w ."), 0);
    EXPECT_EQ(rows(), usual);
    EXPECT_EQ(home.shell("chmod u+w . && cp '" QUILLET "' ../quillet"),
              0);  // where another user may run it
    const std::string otherUser = getuid() == 0 ? "setpriv --reuid=65534 --clear-groups " : "";
    // Looking for leaks would take a thread too.
    EXPECT_EQ(rows("ASAN_OPTIONS=detect_leaks=0", otherUser + "prlimit --nproc=1 ../quillet"),
              usual);
}

TEST_F(Quillet, OneBadFileSpoilsNoOtherProvider) {
    const auto lists = fixture("scenarios/bad-files");
    const auto usual = rows();
    EXPECT_EQ(usual[3]["dailyPercent"], 50);
    for (const auto& file : lists["files"]) {
        makeDatabase(file.value("journal", "DELETE"));
        const auto original = home.at(file["path"]), saved = home.beside("saved");
        home.write(file["path"].get<std::string>() + ".beside", "");  // makes the directory
        const bool exists = fs::exists(original);
        if (exists) fs::rename(original, saved);
        for (const auto& kind : lists["kinds"]) {
            SCOPED_TRACE(kind["what"].dump() + file.dump());
            EXPECT_EQ(home.shell("FILE='" + original + "'; " + kind["make"].get<std::string>()), 0);
            const auto begin = std::chrono::steady_clock::now();
            auto found = rows();
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
            for (const std::size_t row : file["rows"])
                found[row] = usual[row];
            EXPECT_EQ(found, usual);
            fs::remove_all(original);
        }
        if (exists) fs::rename(saved, original);
    }
}

}  // namespace
