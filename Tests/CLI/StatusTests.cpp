#include <gtest/gtest.h>

#include <cmath>

#include "CLI/CLI.h"
#include "Tests/Support/StoppedClock.h"

TEST(Status, OddValuesGiveALineAndADocument) {
    stopClock(1'800'000'000);
    UsageSnapshot odd(Provider::codex), known(Provider::claude), failed = known;
    odd.planLabel = "/\x1B\xFF\xC2\xA0é", odd.effortLabel = "High";
    odd.dailyPercent = odd.dailyResetAt = odd.updatedAt = NAN;
    odd.weeklyPercent = 2.021166666666667, odd.weeklyResetAt = 1e300;
    known.modelLabel = "M", known.planLabel = "Plus", known.weeklyPercent = 49.5;
    known.weeklyResetAt = 1'800'187'230;
    failed.error = "Bad", failed.dailyPercent = 5, failed.modelLabel = "M";
    EXPECT_EQ(CLI::textReport(
                  {{Provider::codex, odd}, {Provider::claude, known}, {Provider::claude, failed}}),
              "Quillet by ZENDRIK\n"
              "Codex: High [/\x1B\xFF\xC2\xA0é] 5h — (resets now) · Wk 2% (resets —)\n"
              "Claude: M [Plus] 5h — · Wk 50% (resets 2d 4h)\nClaude: Bad\n");
    EXPECT_EQ(CLI::jsonReport({}), "[]\n");
    EXPECT_EQ(
        CLI::jsonReport({{Provider::codex, odd}}),
        "[\n  {\n"
        "    \"dailyPercent\" : null,\n    \"dailyResetsAt\" : null,\n    \"effort\" : \"High\",\n"
        "    \"error\" : null,\n    \"isConnected\" : false,\n    \"model\" : null,\n"
        "    \"planLabel\" : \"\\/\\u001b\uFFFD\u00A0é\",\n    \"provider\" : \"Codex\",\n"
        "    \"updatedAt\" : null,\n    \"weeklyPercent\" : 2.021166666666667,\n"
        "    \"weeklyResetsAt\" : null\n  }\n]\n");
    odd.updatedAt = 1'800'000'000;
    EXPECT_NE(CLI::jsonReport({{Provider::codex, odd}}).find("At\" : \"2027-01-15T08:00:00Z\""),
              std::string::npos);
}
