#include <gtest/gtest.h>

#include <cmath>

#include "Model/AppConfig.h"
#include "Model/ModelNaming.h"
#include "Model/UsageFormat.h"
#include "Tests/Support/ScopedClock.h"
#include "Tests/Support/Table.h"

namespace {
/// "Cl+ Co- Ge+ Op+ 20.0": the entries in order, "+" for an enabled one, and the interval.
std::string summary(const AppConfig& config) {
    std::string text;
    for (const auto& [provider, enabled] : config.entries)
        text += std::string(provider.rawValue().substr(0, 2)) + (enabled ? "+ " : "- ");
    return text + nlohmann::json(config.intervalSeconds).dump();
}
}  // namespace

TEST(AppConfig, WhatIsUnusableFallsBackAloneAndTheRestCounts) {
    using namespace std::string_literals;
    for (const auto& row : table("config"))
        EXPECT_EQ(summary(AppConfig::decode(row[0].dump())), row[1]) << row;
    const std::string deep(100'000, '[');
    for (const auto& text :
         {""s, "{\0\"intervalSeconds\":30}"s, "{\"intervalSeconds\":30,\"a\":\"\xFF\"}"s,
          "{\"intervalSeconds\":30,\"a\":" + deep, R"({"intervalSeconds":1e400,"providers":[]})"s})
        EXPECT_EQ(summary(AppConfig::decode(text)), "Cl+ Co+ Ge+ Op+ 20.0") << text.substr(0, 99);
    EXPECT_EQ(AppConfig::decode("\xEF\xBB\xBF{\"intervalSeconds\":18446744073709551616}").intervalSeconds, 0x1p64);
}

TEST(ModelNaming, KnownAndUnknownNamesGiveShortLabels) {
    for (const auto& row : table("models"))
        EXPECT_EQ(orNull(ModelNaming::displayModel(row[0].get<std::string>())), row[1]) << row;
    for (const auto& row : table("efforts"))
        EXPECT_EQ(orNull(ModelNaming::displayEffort(row[0].get<std::string>())), row[1]) << row;
    EXPECT_EQ(ModelNaming::displayModel("\xC3\xFF-x"), "\xC3\xFF X");
}

TEST(UsageFormat, NumbersRoundAndNeverOverflow) {
    const std::pair<double, const char*> percents[] = {
        {std::nextafter(0.5, 0), "0%"}, {42.5, "43%"}, {-0.5, "-1%"}, {130.2, "130%"}, {NAN, "—"}, {0x1p63, "—"}};
    for (const auto& [percent, text] : percents)
        EXPECT_EQ(UsageFormat::percentText(percent), text) << percent;
    ScopedClock clock(1'800'000'000);
    const std::pair<double, const char*> resets[] = {{0, "now"},         {59.9, "0m"},      {3600, "1h 0m"},
                                                     {86399, "23h 59m"}, {280799, "3d 5h"}, {NAN, "now"},
                                                     {1e300, "—"}};
    for (const auto& [ahead, text] : resets)
        EXPECT_EQ(UsageFormat::resetText(Clock::now() + ahead), text) << ahead;
}
