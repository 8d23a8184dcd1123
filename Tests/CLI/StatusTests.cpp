#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "CLI/CLI.h"
#include "Tests/Support/ScopedClock.h"

TEST(Status, TextLeavesOutWhatIsAbsent) {
    ScopedClock clock(1'800'000'000);
    UsageSnapshot none(Provider::claude), odd = none, known = none, failed = none;
    odd.effortLabel = "High", odd.dailyPercent = NAN, odd.dailyResetAt = NAN,
    odd.weeklyResetAt = 1e300;
    known.modelLabel = "M", known.planLabel = "Plus", known.weeklyPercent = 49.5;
    failed.error = "Bad", failed.dailyPercent = 5, failed.modelLabel = "M";
    CLI::Collected collected;
    for (const auto& snapshot : {none, odd, known, failed})
        collected.emplace_back(snapshot.provider, snapshot);
    EXPECT_EQ(CLI::textReport(collected),
              "Quillet by ZENDRIK\nClaude: 5h — · Wk —\nClaude: High 5h — (resets now) · Wk — "
              "(resets —)\n"
              "Claude: M [Plus] 5h — · Wk 50%\nClaude: Bad\n");
}

TEST(Status, OddValuesStillGiveAJSONDocument) {
    UsageSnapshot snapshot(Provider::codex);
    snapshot.planLabel = "/\x1B\xFF\xC2\xA0é", snapshot.dailyPercent = NAN;
    snapshot.dailyResetAt = snapshot.updatedAt = NAN, snapshot.weeklyPercent = 2.021166666666667;
    const auto text = CLI::jsonReport({{Provider::codex, snapshot}});
    EXPECT_EQ(nlohmann::json::parse(text, nullptr, false)[0].size(), 11U) << text;
    for (const char* part :
         {R"("dailyPercent" : null)", R"("dailyResetsAt" : null)",
          R"("weeklyPercent" : 2.021166666666667)", "\"\\/\\u001b\xEF\xBF\xBD\xC2\xA0é\""})
        EXPECT_NE(text.find(part), std::string::npos) << part << " is not in " << text;
    EXPECT_EQ(CLI::jsonReport({}), "[]\n");
}
