#include <gtest/gtest.h>

#include <future>
#include <sstream>

#include "Platform/Keychain.h"
#include "Providers/Collectors.h"
#include "Support/LocalFiles.h"
#include "Tests/Support/Fixture.h"
#include "Tests/Support/HTTPSServer.h"
#include "Tests/Support/StoppedClock.h"

namespace {

using nlohmann::json;
// 43,600 s into the day where it is three hours earlier than in UTC.
constexpr Instant start = 1'750'000'000;

/// connected|error|plan|model|effort|daily|weekly|daily reset|weekly reset, "-" for what is absent
/// and nothing for what is absent at the end.
std::string shown(const UsageSnapshot& snapshot) {
    std::ostringstream out;
    out.precision(15);
    out << (snapshot.connected ? "yes" : "no");
    const auto put = [&out](const auto&... values) {
        ((values ? out << '|' << *values : out << "|-"), ...);
    };
    put(snapshot.error, snapshot.planLabel, snapshot.modelLabel, snapshot.effortLabel,
        snapshot.dailyPercent, snapshot.weeklyPercent, snapshot.dailyResetAt,
        snapshot.weeklyResetAt);
    std::string text = out.str();
    while (text.ends_with("|-"))
        text.resize(text.size() - 2);
    return text;
}

/// A scenario is a list of steps. Each changes files, replies and the clock before it collects.
const auto scenarios = fixture("collectors").get<std::map<std::string, json>>();

class Collector : public testing::TestWithParam<std::pair<const std::string, json>> {
protected:
    void prepare(const json& step) const {
        if (step.contains("at")) stopClock(start + step["at"].get<double>());
        setenv("SQL", step.value("sql", "").c_str(), 1);
        EXPECT_EQ(home.shell(step.value("run", "true")), 0);
        const auto files = step.value("files", json::object());
        for (const auto& [file, content] : files.items())
            home.write(file, content.is_string() ? content.get<std::string>() : content.dump(),
                       Clock::now() + step.value("modified", 0.0));
        if (step.contains("login")) {
            home.write(".claude/.credentials.json", json{{"claudeAiOauth", step["login"]}}.dump());
            home.write(".codex/auth.json", json{{"tokens", step["login"]}}.dump());
        }
        for (const char* path : {"/api/oauth/usage", "/backend-api/wham/usage"})
            if (step.contains("reply")) server.reply(path, step["reply"]);
    }

    static UsageSnapshot collect() {
        const auto name = GetParam().first.substr(0, GetParam().first.find('_'));
        return Collectors::collect(*Provider::fromRawValue(name));
    }

    const TemporaryHome home;
    const HTTPSServer server;
};

TEST_P(Collector, Shows) {
    Keychain::exchangeLookup([](std::string_view service) {
        return LocalFiles::text(TemporaryHome::at("keychain/" + std::string(service)));
    });
    stopClock(start);
    setenv("FIXTURES", FIXTURES, 1);
    setenv("TZ", "XXX3", 1);
    tzset();
    for (const auto& step : GetParam().second) {
        SCOPED_TRACE(step.dump());
        prepare(step);
        const auto before = home.tree();
        const auto begin = std::chrono::steady_clock::now();
        std::vector<std::future<UsageSnapshot>> collects;
        for (int i = step.value("overlapping", 1); i > 0; i--)
            collects.push_back(std::async(std::launch::async, collect));
        for (const auto& each : collects)
            each.wait();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2500));
        EXPECT_EQ(home.tree(), before);
        auto found = server.seen();
        for (auto& each : collects) {
            const auto snapshot = each.get();
            found["shows"] = shown(snapshot);
            found["updated"] = snapshot.updatedAt - start;
            for (const auto& [key, value] : found.items())
                EXPECT_EQ(value, step.value(key, value));
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Scenario, Collector, testing::ValuesIn(scenarios),
                         [](const auto& name) { return name.param.first; });

}  // namespace
