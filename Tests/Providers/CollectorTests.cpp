#include <gtest/gtest.h>

#include <future>
#include <sstream>

#include "Platform/Keychain.h"
#include "Providers/ClaudeProvider.h"
#include "Providers/CodexProvider.h"
#include "Providers/Collectors.h"
#include "Providers/GeminiProvider.h"
#include "Support/Text.h"
#include "Tests/Support/Fixture.h"
#include "Tests/Support/HTTPSServer.h"
#include "Tests/Support/ScopedClock.h"

/// Forgets what the collectors keep for the life of the process.
class CollectorReset {
public:
    CollectorReset() {
        const std::scoped_lock all(ClaudeProvider::lock, CodexProvider::lock);
        ClaudeProvider::cachedToken.reset();
        ClaudeProvider::lastFailedReadAt.reset();
        ClaudeProvider::liveCache.reset();
        ClaudeProvider::lastModel.kept.reset();
        CodexProvider::liveCache.reset();
        CodexProvider::lastTurn.kept.reset();
        GeminiProvider::lastModel.kept.reset();
    }
};

namespace {

using nlohmann::json;
constexpr Instant start =
    1'750'000'000;  // 43,600 s into the day where it is three hours earlier than in UTC

std::string keychainItem;

/// connected|plan|model|effort|daily|weekly|daily reset|weekly reset|error, "-" for what is absent.
std::string shown(const UsageSnapshot& snapshot) {
    std::ostringstream out;
    out.precision(15);
    out << (snapshot.connected ? "yes" : "no");
    const auto put = [&out](const auto&... values) {
        ((values ? out << '|' << *values : out << "|-"), ...);
    };
    put(snapshot.planLabel, snapshot.modelLabel, snapshot.effortLabel, snapshot.dailyPercent,
        snapshot.weeklyPercent, snapshot.dailyResetAt, snapshot.weeklyResetAt, snapshot.error);
    return out.str();
}

/// One collector against files, replies and a clock that each step changes before it collects.
class Collector : public testing::TestWithParam<std::string> {
protected:
    Collector() {
        keychainItem.clear();
        Keychain::exchangeLookup([](std::string_view service) {
            const bool found = service == "Claude Code-credentials" && !keychainItem.empty();
            return found ? std::optional(keychainItem) : std::nullopt;
        });
        setenv("TZ", "XXX3", 1);
        tzset();
    }
    ~Collector() override { Keychain::exchangeLookup(nullptr); }

    void prepare(const json& step) const {
        if (step.contains("forget")) CollectorReset();
        if (step.contains("at")) ScopedClock::set(start + step["at"].get<double>());
        if (step.contains("keychain")) keychainItem = step["keychain"].dump();
        EXPECT_EQ(home.shell(step.value("run", "true")), 0);
        const Instant modified = Clock::now() + step.value("modified", 0.0);
        const auto files = step.value("files", json::object());
        for (const auto& [file, content] : files.items())
            home.write(file, textIn(content), modified);
        for (const std::string chat : step.value("chats", json::array()))
            home.write(".gemini/tmp/app/chats/" + chat + ".jsonl",
                       textOf(FIXTURES "/gemini/" + chat + ".jsonl"), modified);
        server.prepare(step);
    }

    static UsageSnapshot collect() {
        for (const Provider provider : Provider::allCases()) {
            if (Text::lowercased(GetParam()).starts_with(Text::lowercased(provider.rawValue())))
                return Collectors::collect(provider);
        }
        throw std::logic_error("no collector of " + GetParam());
    }

    const TemporaryHome home;
    const ScopedClock clock{start};
    const HTTPSServer server;
    const CollectorReset reset;
};

TEST_P(Collector, Shows) {
    for (const auto& step : scenario(GetParam())) {
        SCOPED_TRACE(step.dump());
        prepare(step);
        const auto begin = std::chrono::steady_clock::now();
        std::vector<std::future<UsageSnapshot>> collects;
        for (int i = step.value("overlapping", 1); i > 0; i--)
            collects.push_back(std::async(std::launch::async, collect));
        for (auto& each : collects) {
            const auto snapshot = each.get();
            EXPECT_EQ(json(shown(snapshot)), step["shows"]);
            EXPECT_EQ(snapshot.updatedAt,
                      start + step.value("updated", snapshot.updatedAt - start));
        }
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2500));
        EXPECT_EQ(server.amiss(step), json());
    }
}
INSTANTIATE_TEST_SUITE_P(Scenario, Collector,
                         testing::ValuesIn(scenarioNames({"claude", "codex", "gemini",
                                                          "opencode"})),
                         [](const auto& scenario) { return scenario.param; });

}  // namespace
