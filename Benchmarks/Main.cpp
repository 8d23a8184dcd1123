// Prints a table. Each line compares something that users wait for with a program that does the
// same, or with a fixed limit.
#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <set>

#include "CLI/CLI.h"
#include "Data.h"
#include "Measure.h"
#ifdef DESKTOP
#include "Desktop.h"
#include "Pictures.h"
#endif
#include "Platform/HomeDirectory.h"
#include "Providers/GeminiProvider.h"
#include "Providers/OpenCodeProvider.h"
#include "Support/HTTP.h"
#include "Support/LocalFiles.h"
#include "Tests/Support/HTTPSServer.h"
#include "Tests/Support/TemporaryHome.h"

namespace {

using Measure::compare;
using Measure::requireSame;
using Measure::run;

constexpr std::size_t tailSize = 256 << 10;
constexpr double noiseRatio = 1.2;  // between two things that should cost the same

Measure::Work program(const std::vector<std::string>& command) {
    return [command] { run(command); };
}

// No login here needs the network: this is what every prompt or cron job pays.
void status() {
    Data::writeAssistants();
    const std::string report = run({QUILLET, "status", "--json"});
    for (const char* part : {"Opus 4.7", "\"5.5\"", "reqs today", "OpenCode"})
        requireSame(part, report.find(part) == std::string::npos ? report : "found", "found");
    compare("peak memory of `quillet status`, limit 16 MiB",
            Measure::peakMemory({QUILLET, "status"}), 16, "MiB", 1);
    compare("`quillet status`, four providers : printing one line", 200,
            program({QUILLET, "status"}), program({BASELINE}), 1.4);
}

void newestFile() {
    const std::string tree = TemporaryHome::at("tree");
    Data::writeTree("tree");
    const std::string find =
        "find '" + tree + "' -type f -name '*.jsonl' -printf '%T@ %p\\n' | sort -n | tail -1";
    const std::string found = run({"sh", "-c", find});
    requireSame("the newest file", LocalFiles::newestFile(tree, ".jsonl").value_or("") + "\n",
                found.substr(found.find(' ') + 1));
    compare(
        "newestFile of 100,000 files : find | sort | tail", 11,
        [&] { LocalFiles::newestFile(tree, ".jsonl"); }, program({"sh", "-c", find}), 0.5);
    compare(
        "newestFile, no name matches : find by name alone", 11,
        [&] { LocalFiles::newestFile(tree, ".log"); }, program({"find", tree, "-name", "*.log"}),
        1);
}

void tail() {
    const std::string large = TemporaryHome::at("large.jsonl");
    const std::string small = TemporaryHome::at("small.jsonl");
    Data::writeSparseLog("large.jsonl", std::size_t{2} << 30);
    Data::writeSparseLog("small.jsonl", std::size_t{768} << 10);
    requireSame("the end of a log", LocalFiles::tail(large, tailSize).value_or("none"),
                Data::log(tailSize));
    compare(
        "tail of a 2 GiB log : of a 1 MiB log", 500, [&] { LocalFiles::tail(large, tailSize); },
        [&] { LocalFiles::tail(small, tailSize); }, noiseRatio);
}

/// The system's authorities are joined by the server's, where only this process and its children
/// see it.
void trust(const HTTPSServer& server) {
    const char* const system = "/etc/ssl/certs";
    const std::string all = TemporaryHome::beside("authorities");
    run({"cp", "-a", system, all});
    const std::string own = server.certificates();
    std::ofstream(all + "/ca-certificates.crt", std::ios::app) << textOf(own);
    const std::string hash = run({"openssl", "x509", "-hash", "-noout", "-in", own});
    std::filesystem::copy_file(own, all + "/" + hash.substr(0, hash.find('\n')) + ".0");
    const bool done = unshare(CLONE_NEWNS) == 0 &&
                      mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                      mount(all.c_str(), system, nullptr, MS_BIND, nullptr) == 0;
    requireSame("a mount namespace", done ? "had" : std::strerror(errno), "had");
}

void collectorPass(const HTTPSServer& server) {
    Data::writeLogins();
    server.reply("/api/oauth/usage", {{"body", R"({"five_hour":{"utilization":42}})"}});
    server.reply("/backend-api/wham/usage", {{"body", R"({"plan_type":"plus"})"}});
    const auto first = CLI::collectAll();
    requireSame("Claude's usage", std::to_string(first[0].second.dailyPercent.value_or(0)),
                std::to_string(42.0));
    requireSame("Codex's plan", first[1].second.planLabel.value_or("none"), "Plus");
    const double took = Measure::median(500, [] { CLI::collectAll(); });
    compare("one pass of all collectors, warm caches, limit 1 ms", took, 1, "ms ", 1);
}

void openCodeTokens() {
    Data::writeDatabase("messages.db", 200'000);
    const std::string database = TemporaryHome::at("messages.db");
    const std::string statement =
        "SELECT COALESCE(SUM(\n"
        "    COALESCE(json_extract(data, '$.tokens.input'), 0) +\n"
        "    COALESCE(json_extract(data, '$.tokens.output'), 0) +\n"
        "    COALESCE(json_extract(data, '$.tokens.reasoning'), 0)\n"
        "), 0)\n"
        "FROM message\n"
        "WHERE time_created >= ?1 AND json_extract(data, '$.tokens') IS NOT NULL";
    const std::string cutOff =
        ".parameter set ?1 " + std::to_string(std::time(nullptr) - 18000) + "000";
    const auto shell = [&] {
        return run({"sqlite3", "-readonly", "-cmd", cutOff, database, statement});
    };
    const auto sum = [&] { return OpenCodeProvider::tokensInLastFiveHours(database).value_or(-1); };
    requireSame("OpenCode's tokens", std::to_string(sum()) + "\n", shell());
    compare("OpenCode's tokens in 200,000 messages : sqlite3", 11, sum, shell, 1.1);
}

/// Against grep over 200 files of `text`. `counted` matches each line that is a request.
void geminiRequests(const std::string& name, const std::string& text, const std::string& counted) {
    const std::string home = "gemini-" + name;
    TemporaryHome::write(home + "/.gemini/oauth_creds.json", "{}");
    for (int file = 0; file < 200; ++file)
        TemporaryHome::write(home + "/.gemini/tmp/" + std::to_string(file) + "/chats/session.jsonl",
                             text);
    const std::string before = HomeDirectory::exchangeOverride(TemporaryHome::at(home));
    const std::string lines =
        run({"sh", "-c", "grep -rhE '" + counted + "' '" + TemporaryHome::at(home) + "' | wc -l"});
    requireSame("Gemini's requests", GeminiProvider().collect().error.value_or("none"),
                std::to_string(std::stol(lines)) + " reqs today");
    compare(
        "Gemini's requests in 200 " + name + " of 256 KiB : grep -c", 31,
        [] { GeminiProvider().collect(); },
        program(
            {"grep", "-rch", "-e", "request", "-e", "generateContent", TemporaryHome::at(home)}),
        1);
    HomeDirectory::exchangeOverride(before);
}

void request(const HTTPSServer& server) {
    server.reply("/reply", {{"body", R"({"five_hour":{"utilization":42}})"}});
    const std::string url = "https://api.anthropic.com/reply";
    const std::vector<std::string> curl = {"curl", "-s", "-S", "--connect-to", server.standIns()[0],
                                           url};
    HTTP::restart({"", server.standIns()});
    const auto get = [&] {
        return HTTP::get(url, {{"Accept", "application/json"}}, 8).value_or(HTTP::Response{}).data;
    };
    requireSame("a reply", get(), run(curl));
    compare("HTTP::get with a new connection : the curl command", 50, get, program(curl), 0.7);
}

}  // namespace

int main(int argc, char** argv) {
    [[maybe_unused]] const bool verbose =
        std::set<std::string_view>(argv + 1, argv + argc).contains("--verbose");
    for (const char* proxy : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
        unsetenv(proxy);
    const TemporaryHome home;
    setenv("HOME", TemporaryHome::path().c_str(), 1);  // for child processes

    status();  // first, while this process is small
#ifdef DESKTOP
    Pictures::command();
    Pictures::refresh(verbose);
#endif
    newestFile();
    tail();
    openCodeTokens();
    geminiRequests("logs", Data::log(tailSize), "request|generateContent");
    geminiRequests("chats", Data::chat(tailSize), "\"type\":\"gemini\".*}$");
    const HTTPSServer server;
    trust(server);
    collectorPass(server);
    request(server);
#ifdef DESKTOP
    Desktop::refresh(verbose);
    Desktop::run(server);
#endif
    return Measure::withinBudgets() ? 0 : 1;
}
