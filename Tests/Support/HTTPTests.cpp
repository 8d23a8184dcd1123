#include "Support/HTTP.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <regex>
#include <set>

#include "Tests/Support/Fixture.h"
#include "Tests/Support/HTTPSServer.h"

namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

/// The result as [status, body], with its length for a long body, null where it is absent.
json fetch(const std::string& url, const HTTP::Headers& fields = {}, double timeout = 5) {
    const auto response = HTTP::get(url, fields, timeout);
    if (!response) return {};
    const auto& body = response->data;
    return {response->status, body.size() < 100 ? json(body) : json(body.size())};
}

class HTTPGet : public testing::TestWithParam<std::string> {
protected:
    ~HTTPGet() override {
        for (const auto& name : variables)
            unsetenv(name.c_str());
    }

    /// A scenario with the server's own address and authority in the places left for them.
    json steps() const {
        const auto text = std::regex_replace(scenario(GetParam()).dump(), std::regex("ADDRESS"),
                                             server.address());
        return json::parse(
            std::regex_replace(text, std::regex("AUTHORITY"), server.certificates()));
    }

    void prepare(const json& step) {
        server.prepare(step);
        const auto environment = step.value("environment", json::object());
        for (const auto& [name, value] : environment.items())
            setenv(variables.insert(name).first->c_str(),
                   value.get_ref<const std::string&>().c_str(), 1);
        const auto standIns =
            step.value("stand-ins", true) ? server.standIns() : std::vector<std::string>();
        if (step.contains("certificates")) HTTP::restart({step["certificates"], standIns});
        std::this_thread::sleep_for(Milliseconds(1000 * step.value("wait", 0.0)));
    }

    void play(const json& step) const {
        SCOPED_TRACE(step.dump());
        const double timeout = step.value("timeout", 5.0);
        const auto begin = Clock::now();
        EXPECT_EQ(
            fetch(step["url"].get<std::string>(), step.value("fields", HTTP::Headers()), timeout),
            step["gives"]);
        EXPECT_LE(Milliseconds(Clock::now() - begin).count(),
                  1000 * step.value("within", timeout + 2) + 100);
        EXPECT_EQ(server.amiss(step), json());
    }

    const TemporaryHome home;
    const HTTPSServer server;
    std::set<std::string> variables;
};

TEST_P(HTTPGet, Plays) {
    for (const auto& row : steps()) {
        const json together = row.is_array() ? row : json::array({row});
        std::vector<std::future<void>> calls;
        for (const auto& step : together) {
            prepare(step);
            calls.push_back(std::async(std::launch::async, [this, &step] { play(step); }));
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Scenario, HTTPGet, testing::ValuesIn(scenarioNames({"http"})),
                         [](const auto& scenario) { return scenario.param; });

TEST(HTTPEnd, CallsUnderWayEndAtOnceAndLaterOnesDoNotStart) {
    const TemporaryHome home;
    const HTTPSServer server;
    server.reply("/silent", {{"behaviour", "silent"}});
    const std::function<void()> endings[] = {
        [&] {
            HTTP::restart({server.certificates(), server.standIns()});
        },
        HTTP::shutDown};
    int requests = 0;
    for (const auto& end : endings) {
        auto call =
            std::async(std::launch::async, [] { return fetch("https://chatgpt.com/silent"); });
        while (server.seen()["requests"] == requests)
            std::this_thread::sleep_for(Milliseconds(5));
        std::this_thread::sleep_for(Milliseconds(400));  // libcurl has nothing more to do
        const auto begin = Clock::now();
        end();
        EXPECT_EQ(call.get(), json());
        EXPECT_LT(Milliseconds(Clock::now() - begin).count(), 300);
        ++requests;
    }
    EXPECT_EQ(fetch("https://chatgpt.com/"), json()) << "a call started after the end";
    HTTP::restart({server.certificates(), server.standIns()});
    EXPECT_EQ(fetch("https://chatgpt.com/"), json({404, ""}));
    EXPECT_EQ(server.seen()["requests"], requests + 1);
}

}  // namespace
