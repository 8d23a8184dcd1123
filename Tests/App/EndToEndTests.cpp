#include <gtest/gtest.h>

#include <sstream>

#include "Tests/Support/Fixture.h"
#include "Tests/Support/HTTPSServer.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// The built program over a home directory with all four assistants in it.
class Quillet : public testing::Test {
protected:
    Quillet() {
        setenv("FIXTURES", FIXTURES, 1);
        EXPECT_EQ(home.shell(R"sh(
            cp -R "$FIXTURES/home/." . && sed -i "s/NOW/$(date -u +%FT%TZ)/" .gemini/tmp/*/chats/*
            opencode-tool .local/share/opencode/opencode.db "$(cat "$FIXTURES/opencode.sql")")sh"),
                  0);
    }

    /// What a shell's command prints with just this environment, no input and at most 20 seconds.
    /// "quillet" is the built program, for which the network ends at a proxy that isn't there.
    static std::string output(const std::string& command, const std::string& environment = "") {
        const auto noon =
            std::to_string(time(nullptr) / 3600 % 24 - 12);  // no midnight comes between two runs
        const auto given = "env -i TZ=AAA" + noon + " https_proxy=http://127.0.0.1:1 HOME='" +
                           TemporaryHome::path() + "' PATH='" +
                           fs::path(QUILLET).parent_path().string() + ":" + getenv("PATH") + "' ";
        const int status = TemporaryHome::shell(given + environment + " timeout -k 1 20 " +
                                                command + " < /dev/null > ../printed 2>&1");
        auto printed = textOf(TemporaryHome::beside("printed"));
        EXPECT_EQ(status, 0) << printed;
        EXPECT_EQ(printed.find("secret-"), std::string::npos) << "a token shows: " << printed;
        return printed;
    }

    /// The rows of the JSON report without the time, which differs between any two of them.
    static json rows(const std::string& environment = "", const std::string& command = "quillet") {
        const auto printed = output(command + " status --json", environment);
        auto report = json::parse(printed, nullptr, false);
        if (!report.is_array() || report.size() != 4) throw std::runtime_error(printed);
        for (auto& row : report)
            EXPECT_EQ(row.erase("updatedAt"), 1U);
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
    const auto expected = fixture("status");
    for (const auto& [path, body] : expected["replies"].items())
        server.reply(path, {{"body", body}});

    const auto before = home.tree();
    const auto keys = home.beside("keys");
    const auto environment = "SSLKEYLOGFILE=" + keys +
                             " OPENSSL_CONF='" FIXTURES "/openssl.cnf' https_proxy=http://" +
                             server.address();
    EXPECT_EQ(rows(environment, command), expected["rows"]);
    EXPECT_EQ(server.seen()["sent"][1], json({"Authorization", "Bearer secret-codex-token"}));
    EXPECT_EQ(home.tree(), before);
    EXPECT_FALSE(fs::exists(keys)) << "the keys of the connection were written down";
}

TEST_F(Quillet, TheFirstArgumentIsTheCommand) {
    EXPECT_EQ(home.shell("rm -r .[a-z]*"), 0);
    home.write(".config/quillet/config.json",
               R"({"providers":[{"id":"codex"},{"id":"CLAUDE","enabled":0},{"id":"Codex"}]})");
    const std::string status =
        "Quillet by ZENDRIK\nCodex: Login required\nCodex: Login required\n"
        "Gemini: Not installed\nOpenCode: Not installed\n";
    const std::string version = "Quillet " QUILLET_VERSION " by ZENDRIK\n";
    const std::string usage =
        "Quillet by ZENDRIK\nusage: quillet [command]\n\n"
        "  (no command)   run the menu-bar app\n"
        "  status [--json]  print current usage for all providers\n"
        "  preview [--out FILE]  render the strip to a PNG\n"
        "  version        print the version\n";
    const std::pair<const char*, std::string> cases[] = {
        {"sh -c 'quillet 2>&1 | grep -c .'", "1\n"},  // a line, as there is no display
        {"sh -c 'DISPLAY=:9999 quillet watch --json 2>&1 | grep -c .'", "1\n"},
        {"quillet status --JSON json", status},
        {"quillet Status", usage},
        {"quillet ''", usage},
        {"quillet --json status", usage},
        {"quillet version", version},
        {"quillet --version status", version},
        {"sh -c '{ sleep 0.3; quillet status; echo $? >&2; } 2> status | : ; cat status'", "0\n"},
        {"sh -c 'quillet status <&- >&- 2>&- || echo $?'", ""},
    };
    for (const auto& [command, printed] : cases)
        EXPECT_EQ(output(command), printed) << command;
}

TEST_F(Quillet, ShowsTheSameWhereverItRuns) {
    const auto usual = rows();
    EXPECT_EQ(usual[0]["model"], "Opus 4.7");
    EXPECT_EQ(rows("HOME=/nowhere")[3]["error"], "Not installed");
    EXPECT_EQ(home.shell("cp '" QUILLET "' ../quillet"), 0);  // for another user
    const std::string otherUser = getuid() == 0 ? "setpriv --reuid=65534 --clear-groups " : "";
    // Looking for leaks would take a thread too.
    EXPECT_EQ(rows("ASAN_OPTIONS=detect_leaks=0", otherUser + "prlimit --nproc=1 ../quillet"),
              usual);
}

TEST_F(Quillet, OneBadFileSpoilsNoOtherProvider) {
    const char* const kinds[] = {
        "true",  // which leaves it missing
        "mkdir \"$FILE\"",
        "mkfifo \"$FILE\"",
        "ln -s /dev/zero \"$FILE\"",
        "ln -s \"$FILE\" \"$FILE\"",
        "echo {} > \"$FILE\"; chmod 0 \"$FILE\"",
        "truncate -s 2G \"$FILE\"",
        "printf '{\"model\":\"a\\0b\\377\\300\"}\\0' > \"$FILE\"",
        "printf '{\"tokens\":{\"access_token\":\"secret-' > \"$FILE\"",
        "yes '[' | head -c 100000 | tr -d '\\n' > \"$FILE\"",
        "echo '{\"intervalSeconds\":1e400,\"model\":-0,\"x\":9223372036854775808}' > \"$FILE\"",
    };
    home.shell("cd .local/share/opencode && touch opencode.db-wal opencode.db-journal");
    home.write(".config/quillet/config.json", "{}");
    const auto usual = rows();
    EXPECT_EQ(usual[3]["dailyPercent"], 50);
    std::istringstream files(output("find . -type f"));
    for (std::string file; std::getline(files, file);) {
        setenv("FILE", file.c_str(), 1);
        home.shell("mv \"$FILE\" ../saved");
        for (const char* const make : kinds) {
            SCOPED_TRACE(file + ": " + make);
            EXPECT_EQ(home.shell(make), 0);
            const auto begin = std::chrono::steady_clock::now();
            auto found = rows();
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
            for (int i = 0; const char* own : {".claude/", ".codex/", ".gemini/", "opencode/"}) {
                if (file.find(own) != std::string::npos) found[i] = usual[i];
                ++i;
            }
            EXPECT_EQ(found, usual);
            fs::remove_all(home.at(file));
        }
        home.shell("mv ../saved \"$FILE\"");
    }
}

}  // namespace
