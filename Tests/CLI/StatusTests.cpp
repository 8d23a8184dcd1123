#include <cmath>
#include <nlohmann/json.hpp>

#include "CLI/CLI.h"
#include "Tests/Support/CollectorTest.h"

TEST(Status, TextLeavesOutWhatIsAbsentAndWhatSteersATerminal) {
    ScopedClock clock(1'800'000'000);
    UsageSnapshot none(Provider::claude), odd = none, hostile = none, failed = none;
    odd.effortLabel = "High", odd.dailyPercent = NAN, odd.dailyResetAt = NAN, odd.weeklyResetAt = 1e300;
    hostile.modelLabel = "M\n", hostile.planLabel = "\x1B[2J\r\x7F", hostile.weeklyPercent = 49.5;
    failed.error = "Bad \xC2\x9B", failed.dailyPercent = 5, failed.modelLabel = "M";
    CLI::Collected collected;
    for (const auto& snapshot : {none, odd, hostile, failed})
        collected.emplace_back(snapshot.provider, snapshot);
    auto report = CLI::textReport(collected);
    EXPECT_EQ(report.find("\xC2\x9B"), std::string::npos) << "the one-character form of ESC [";
    report.resize(report.find("Bad ") + 3);
    EXPECT_EQ(report,
              "Quillet by ZENDRIK\nClaude: 5h — · Wk —\nClaude: High 5h — (resets now) · Wk — (resets —)\n"
              "Claude: M  [ [2J  ] 5h — · Wk 50%\nClaude: Bad");
}

TEST(Status, OddValuesStillGiveAJSONDocument) {
    for (const double number : {double(NAN), double(INFINITY), 1e300, 5e-324, 1.0 / 3, 42.0}) {
        UsageSnapshot snapshot(Provider::codex);
        snapshot.planLabel = "/\x1B\xFF", snapshot.dailyPercent = number;
        snapshot.dailyResetAt = snapshot.updatedAt = number * 1e20;
        const auto text = CLI::jsonReport({{Provider::codex, snapshot}});
        const auto read = nlohmann::json::parse(text, nullptr, false);
        ASSERT_TRUE(read.is_array() && read[0].size() == 11) << text;
        EXPECT_EQ(read[0]["dailyPercent"], std::isfinite(number) ? nlohmann::json(number) : nlohmann::json())
            << text;
        EXPECT_NE(text.find(R"("planLabel" : "\/\u001b)"), std::string::npos) << text;
        EXPECT_EQ(text.find("42.0"), std::string::npos) << "not the shortest form";
    }
    EXPECT_EQ(CLI::jsonReport({}), "[]\n");
}
