#include "Support/HTTP.h"

#include <gtest/gtest.h>

#include <future>

#include "Tests/Support/HTTPSServer.h"

namespace {

using namespace std::string_literals;
using nlohmann::json;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

const std::string host = "https://api.anthropic.com";
const json notFound = {404, ""};

/// The result as [status, body], null where it is absent.
json fetch(const std::string& url, const HTTP::Headers& fields = {}, double timeout = 5) {
    const auto response = HTTP::get(url, fields, timeout);
    if (!response) return {};
    return {response->status, response->data};
}

class HTTPGet : public testing::Test {
protected:
    const TemporaryHome home;
    const HTTPSServer server;
};

TEST_F(HTTPGet, AFieldThatWouldBreakTheRequestIsNotSent) {
    for (const auto& end : {"\r"s, "\n"s, "\0"s, "\r\nX-Smuggled: 1"s}) {
        EXPECT_EQ(fetch(host + "/", {{"Authorization", "secret" + end}}), json()) << end;
        EXPECT_EQ(fetch((host + "/a").append(end)), json()) << end;
    }
    EXPECT_EQ(server.seen()["requests"], 0);
    EXPECT_EQ(fetch(host + "/", {{"accept", "text/plain"}, {"X-Blank", " "}}), notFound);
    EXPECT_EQ(server.seen()["sent"].dump(), R"([["X-Blank",""],["accept","text/plain"]])");
}

TEST_F(HTTPGet, TheFieldsAndTheBodyAreBounded) {
    const std::string part(66'000, 'x');
    json fields = {{"X-A", part}, {"X-B", part}};
    server.reply("/head", {{"headers", fields}});
    EXPECT_EQ(fetch(host + "/head"), json({200, ""}));
    fields["Location"] = "/head";
    server.reply("/r", {{"status", 302}, {"headers", fields}});
    EXPECT_EQ(fetch(host + "/r"), json()) << "the fields of all replies are too many";
    server.reply("/body", {{"body", std::string((64 << 20) + 1, 'x')}});
    EXPECT_TRUE(fetch(host + "/body").is_null());
}

TEST_F(HTTPGet, RedirectsStayOnHTTPSAndTheTokenOnItsHost) {
    server.reply("/landing", {{"body", "landed"}});
    const json landed = {200, "landed"};
    // Where to, the result, and the number of fields in the last request: Accept and perhaps the
    // token.
    const std::tuple<std::string, json, int> rows[] = {
        {"/landing", landed, 2},
        {"https://chatgpt.com/landing", landed, 1},
        {"http://" + server.address() + "/landing", {}, 2},
        {"/r", {}, 2}};
    for (const auto& [location, result, sent] : rows) {
        server.reply("/r", {{"status", 302}, {"headers", {{"Location", location}}}});
        EXPECT_EQ(fetch(host + "/r", {{"Authorization", "secret"}}), result) << location;
        EXPECT_EQ(server.seen()["sent"].size(), sent) << location;
    }
    EXPECT_LE(server.seen()["requests"], 20) << "it is redirected to itself without end";
}

TEST_F(HTTPGet, OfTheEnvironmentOnlyTheProxyCounts) {
    const auto expect = [](const json& result, const char* name, const std::string& value) {
        setenv(name, value.c_str(), 1);
        EXPECT_EQ(fetch(host + "/"), result) << name << "=" << value;
    };
    const std::string nowhere = "http://127.0.0.1:1", proxy = "http://" + server.address();
    for (const char* name : {"http_proxy", "ALL_PROXY", "all_proxy"})
        expect(notFound, name, nowhere);
    expect({}, "HTTPS_PROXY", nowhere);
    expect(notFound, "no_proxy", "localhost,api.anthropic.com");
    unsetenv("no_proxy");
    EXPECT_EQ(server.seen()["requests"], 4);
    expect(notFound, "https_proxy", proxy);
    expect({}, "https_proxy", "");
    expect(notFound, "HTTPS_PROXY", proxy);
    EXPECT_EQ(server.seen()["requests"], 8) << "two tunnels and what came through them";
    EXPECT_EQ(fetch("https://misnamed.test/"), json());
    HTTP::restart({});
    for (const char* name : {"SSL_CERT_FILE", "CURL_CA_BUNDLE"})
        expect({}, name, server.certificates());
    EXPECT_EQ(server.seen()["requests"], 14)
        << "the hashed directory, then the bundle, three times";
}

TEST_F(HTTPGet, ReturnsInTimeWhateverTheServerDoes) {
    const auto play = [](const std::string& path, double timeout, double maxTime,
                         const json& result) {
        const auto begin = Clock::now();
        EXPECT_EQ(fetch(host + path, {}, timeout), result) << path;
        EXPECT_LE(Seconds(Clock::now() - begin).count(), maxTime) << path;
    };
    const auto rows = R"([["silent", "", 0.5, 1.5, null], ["drip", "1234", 0.5, 1.5, null],
        ["drip", "12", 1.5, 3.5, [200, "12"]], ["drip", "123456789", 1.5, 3.6, null],
        ["close", "1234", 0.5, 1.5, null], ["endless", "", 0.5, 2.6, null]])"_json;
    std::vector<std::future<void>> calls;
    for (const auto& row : rows) {
        const auto path = "/" + std::to_string(calls.size());
        server.reply(path, {{"behaviour", row[0]}, {"body", row[1]}});
        calls.push_back(std::async(std::launch::async, play, path, row[2], row[3], row[4]));
    }
    calls.clear();  // waits for them
    setenv("https_proxy", ("http://" + server.address()).c_str(), 1);
    server.reply("CONNECT", {{"status", 407}, {"behaviour", "silent"}});
    play("/", 0.5, 1.5, {});
    server.reply("CONNECT", {{"status", 407}, {"behaviour", "endless"}});
    play("/", 0.5, 2.6, {});
}

TEST_F(HTTPGet, CallsUnderWayEndAtOnceAndLaterOnesDoNotStart) {
    server.reply("/silent", {{"behaviour", "silent"}});
    auto call = std::async(std::launch::async, [] { return fetch(host + "/silent"); });
    while (server.seen()["requests"] == 0)
        std::this_thread::sleep_for(Seconds(0.005));
    std::this_thread::sleep_for(Seconds(0.4));  // libcurl has nothing more to do
    const auto begin = Clock::now();
    HTTP::shutDown();
    EXPECT_EQ(call.get(), json());
    EXPECT_LT(Seconds(Clock::now() - begin).count(), 0.3);
    EXPECT_EQ(fetch(host + "/"), json());
    EXPECT_EQ(server.seen()["requests"], 1);
}

}  // namespace
