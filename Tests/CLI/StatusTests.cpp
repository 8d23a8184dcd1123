#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "CLI/CLI.h"
#include "Tests/Support/ScopedClock.h"

TEST(Status, TextLeavesOutWhatIsAbsentAndWhatSteersATerminal) {
    ScopedClock clock(1'800'000'000);
    UsageSnapshot none(Provider::claude), odd = none, hostile = none, failed = none;
    odd.effortLabel = "High", odd.dailyPercent = NAN, odd.dailyResetAt = NAN,
    odd.weeklyResetAt = 1e300;
    hostile.modelLabel = "M\n", hostile.planLabel = "\x1B[2J\r\x7F", hostile.weeklyPercent = 49.5;
    failed.error = "Bad \xC2\x9B", failed.dailyPercent = 5, failed.modelLabel = "M";
    CLI::Collected collected;
    for (const auto& snapshot : {none, odd, hostile, failed})
        collected.emplace_back(snapshot.provider, snapshot);
    auto report = CLI::textReport(collected);
    EXPECT_EQ(report.find("\xC2\x9B"), std::string::npos) << "the one-character form of ESC [";
    report.resize(report.find("Bad ") + 3);
    EXPECT_EQ(report,
              "Quillet by ZENDRIK\nClaude: 5h — · Wk —\nClaude: High 5h — (resets now) · Wk — "
              "(resets —)\n"
              "Claude: M  [ [2J  ] 5h — · Wk 50%\nClaude: Bad");
}

TEST(Status, OddValuesStillGiveAJSONDocument) {
    UsageSnapshot snapshot(Provider::codex);
    snapshot.planLabel = "/\x1B\xFF\x7F\xC2\x80\xC2\x9F\xC2\xA0é", snapshot.dailyPercent = NAN;
    snapshot.dailyResetAt = snapshot.updatedAt = NAN, snapshot.weeklyPercent = 1e300;
    const auto text = CLI::jsonReport({{Provider::codex, snapshot}});
    EXPECT_EQ(nlohmann::json::parse(text, nullptr, false)[0].size(), 11U) << text;
    for (const char* part :
         {R"("dailyPercent" : null)", R"("dailyResetsAt" : null)", R"("weeklyPercent" : 1e+300)",
          "\"\\/\\u001b\xEF\xBF\xBD\\u007f\\u0080\\u009f\xC2\xA0é\""})
        EXPECT_NE(text.find(part), std::string::npos) << part << " is not in " << text;
    EXPECT_EQ(CLI::jsonReport({}), "[]\n");
}
