#include <future>

#include "Platform/Keychain.h"
#include "Tests/Support/CollectorTest.h"
#include "Tests/Support/HTTPSServer.h"
#include "Tests/Support/Scenario.h"

namespace {

using nlohmann::json;
constexpr Instant start = 1'750'000'000;

std::string keychainItem;

/// One collector against files, replies and a clock that each step changes before it collects.
class OnlineCollector : public testing::TestWithParam<Scenario> {
protected:
    OnlineCollector() {
        Keychain::exchangeLookup([](std::string_view service) {
            const bool found = service == "Claude Code-credentials" && !keychainItem.empty();
            return found ? std::optional(keychainItem) : std::nullopt;
        });
    }

    void prepare(const json& step) {
        if (step.contains("forget")) CollectorReset();
        if (step.contains("at")) ScopedClock::set(start + step["at"].get<double>());
        if (step.contains("keychain")) keychainItem = step["keychain"].dump();
        const auto files = step.value("files", json::object());
        for (const auto& [file, content] : files.items()) {
            TemporaryHome::write(file, content.is_string() ? content.get<std::string>() : content.dump());
            if (content.is_null()) std::filesystem::remove(TemporaryHome::at(file));
        }
        const auto replies = step.value("replies", json::object());
        for (const auto& [path, reply] : replies.items()) {
            auto filled = reply;
            if (filled.contains("body") && !filled["body"].is_string()) filled["body"] = filled["body"].dump();
            server.reply(path, filled);
        }
    }

    template <typename Collector>
    void play() {
        for (const auto& step : GetParam().steps) {
            SCOPED_TRACE(step.dump());
            prepare(step);
            std::vector<std::future<UsageSnapshot>> collects;
            for (int i = step.value("overlapping", 1); i > 0; i--) {
                collects.push_back(std::async(std::launch::async, [] { return Collector().collect(); }));
            }
            const auto begin = std::chrono::steady_clock::now();
            for (auto& collect : collects) {
                const auto snapshot = collect.get();
                EXPECT_EQ(shown(snapshot), step["shows"]);
                EXPECT_EQ(snapshot.updatedAt, start + step.value("updated", snapshot.updatedAt - start));
            }
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2500));
            EXPECT_EQ(server.requests().size(), step.value("requests", server.requests().size()));
            EXPECT_EQ(server.lastFields(), step.value("sent", server.lastFields()));
        }
    }

    TemporaryHome home;
    ScopedClock clock{start};
    HTTPSServer server;
};

class Claude : public OnlineCollector {};
TEST_P(Claude, Collects) {
    play<ClaudeProvider>();
}
INSTANTIATE_TEST_SUITE_P(Scenario, Claude, testing::ValuesIn(Scenario::load("claude.json")), Scenario::nameOf);

class Codex : public OnlineCollector {};
TEST_P(Codex, Collects) {
    play<CodexProvider>();
}
INSTANTIATE_TEST_SUITE_P(Scenario, Codex, testing::ValuesIn(Scenario::load("codex.json")), Scenario::nameOf);

TEST(OnlineDecoders, TextThatIsCutIsNoDocument) {
    const auto wholeOnly = [](std::string_view text, const auto& decode) {
        for (std::size_t i = 0; i < text.size(); i++)
            EXPECT_FALSE(decode(text.substr(0, i))) << i;
        EXPECT_TRUE(decode(text));
    };
    wholeOnly(R"({"claudeAiOauth":{"accessToken":"\u00e9\"","expiresAt":1.5e12}})",
              ClaudeProvider::decodeCredentials);
    wholeOnly(R"({"five_hour":{"utilization":4.2e1},"seven_day":null})", ClaudeProvider::decodeUsage);
    wholeOnly(R"({"tokens":{"access_token":"\ud83d\ude00","n":[-0,true]}})", CodexProvider::decodeAuth);
    wholeOnly(R"({"rate_limit":{"primary_window":{"used_percent":7}}})", CodexProvider::decodeUsage);
}

}  // namespace
