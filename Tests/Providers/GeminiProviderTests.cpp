#include "Providers/GeminiProvider.h"

#include "Tests/Support/CollectorTest.h"
#include "Tests/Support/Table.h"

TEST(GeminiProvider, ShowsWhatItsFolderSays) {
    TemporaryHome home;
    EXPECT_EQ(shown(GeminiProvider().collect()), "no|-|-|-|-|-|-|-|Not installed");
    for (const auto& step : table("gemini-steps")) {  // a file, its text, what shows from then on
        home.write(".gemini/" + step[0].get<std::string>(), step[1].get<std::string>());
        EXPECT_EQ(shown(GeminiProvider().collect()), step[2]) << step;
    }
}

TEST(GeminiProvider, CountsTheRequestLinesOfTodaysLogs) {
    setenv("TZ", "XXX3", 1);
    tzset();
    const Instant midnight = 20'000 * 86400.0 + 3 * 3600;
    ScopedClock clock(midnight + 3600);
    auto rows = table("gemini-logs");  // a file, its text, its age in the day, the count
    const std::string filler(262144 - 8, 'x');
    rows.push_back({"tmp/a.log", "request" + filler + "\n", 0, 1});
    rows.push_back({"tmp/a.log", "request" + filler + "\n\n", 0, 0});
    for (const auto& row : rows) {
        TemporaryHome home;
        home.write(row[0], row[1].get<std::string>(), midnight + row[2].get<double>());
        const auto count = GeminiProvider::requestsToday(home.path());
        EXPECT_EQ(count ? nlohmann::json(*count) : nlohmann::json(), row[3]) << row.dump().substr(0, 80);
    }
    TemporaryHome home;
    home.write("tmp/a.log", "request\xFF");
    EXPECT_EQ(GeminiProvider::requestsToday(home.path()), std::nullopt) << "not UTF-8";
}
