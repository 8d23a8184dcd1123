#include "Support/HTTP.h"

#include <sys/resource.h>

#include <future>
#include <regex>
#include <set>

#include "Tests/Support/HTTPSServer.h"
#include "Tests/Support/Scenario.h"

namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// The result as [status, body], null where it is absent.
json get(const std::string& url, const HTTP::Headers& fields = {}, double timeout = 5) {
    const auto response = HTTP::get(url, fields, timeout);
    return response ? json{response->status, response->data} : json();
}

class HTTPGet : public testing::TestWithParam<Scenario> {
protected:
    /// Text of a scenario with the server's own address and authority in the places left for them.
    json filled(const json& step) const {
        const auto text = std::regex_replace(step.dump(), std::regex("ADDRESS"), server.address());
        return json::parse(std::regex_replace(text, std::regex("AUTHORITY"), server.certificates()));
    }

    void prepare(const json& step) {
        const auto replies = step.value("replies", json::object());
        for (const auto& [path, reply] : replies.items())
            server.reply(path, reply);
        const auto environment = step.value("environment", json::object());
        for (const auto& [name, value] : environment.items()) {
            setenv(name.c_str(), value.get_ref<const std::string&>().c_str(), 1);
        }
        const auto standIns = step.value("stand-ins", true) ? server.standIns() : std::vector<std::string>();
        if (step.contains("certificates")) HTTP::restart({step["certificates"], standIns});
    }

    std::set<int> connections() const {
        std::set<int> all;
        for (const auto& request : server.requests())
            all.insert(request["connection"].get<int>());
        return all;
    }

    TemporaryHome home;
    HTTPSServer server;
};

TEST_P(HTTPGet, Plays) {
    for (const auto& written : GetParam().steps) {
        const json step = filled(written);
        SCOPED_TRACE(step.dump());
        prepare(step);
        EXPECT_EQ(get(step["url"], step.value("fields", HTTP::Headers())), step["gives"]);
        EXPECT_EQ(server.lastFields(), step.value("sent", server.lastFields()));
        EXPECT_EQ(server.requests().size(), step.value("requests", server.requests().size()));
        EXPECT_EQ(server.requests("CONNECT").size(), step.value("tunnels", server.requests("CONNECT").size()));
        EXPECT_EQ(connections().size(), step.value("connections", connections().size()));
    }
}
INSTANTIATE_TEST_SUITE_P(Scenario, HTTPGet, testing::ValuesIn(Scenario::load("http.json")), Scenario::nameOf);

class HTTPGetAtOnce : public HTTPGet {};
TEST_P(HTTPGetAtOnce, Plays) {
    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    std::vector<std::future<void>> calls;
    for (const auto& step : GetParam().steps) {
        server.reply(step["path"], step["reply"]);
        calls.push_back(std::async(std::launch::async, [&step] {
            const auto begin = Clock::now();
            const auto url = step["host"].get<std::string>() + step["path"].get<std::string>();
            EXPECT_EQ(get(url, {}, step["timeout"]), step["gives"]) << step["what"];
            EXPECT_LE(millisecondsSince(begin), 1000 * (step["timeout"].get<double>() + 2) + 100) << step["what"];
        }));
    }
    for (auto& call : calls)
        call.get();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));  // the late answer comes, to nobody
    EXPECT_EQ(get("https://chatgpt.com/after"), json({404, ""}));
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 256 * 1024) << "KiB more, for bodies nobody wants";
}
INSTANTIATE_TEST_SUITE_P(Scenario, HTTPGetAtOnce, testing::ValuesIn(Scenario::load("http-at-once.json")),
                         Scenario::nameOf);

TEST_F(HTTPGet, EndingTheSessionReleasesItsCallers) {
    server.reply("/silent", {{"behaviour", "silent"}});
    const auto begin = Clock::now();
    auto call = std::async(std::launch::async, [] { return get("https://chatgpt.com/silent"); });
    while (server.requests().empty())
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    HTTP::restart({server.certificates(), server.standIns()});
    EXPECT_EQ(call.get(), json());
    EXPECT_LT(millisecondsSince(begin), 3000);
}

}  // namespace
