#include <gtest/gtest.h>

#include <cmath>

#include "Model/AppConfig.h"
#include "Model/ModelNaming.h"
#include "Model/UsageFormat.h"
#include "Tests/Support/Fixture.h"
#include "Tests/Support/ScopedClock.h"

namespace {

using Labels = std::map<std::string, std::string>;

/// "Cl+ Co- Ge+ Op+ 20.0": the entries in order, "+" for an enabled one, and the interval.
std::string summary(std::string_view text) {
    const auto config = AppConfig::decode(text);
    std::string all;
    for (const auto& [provider, enabled] : config.entries)
        all += std::string(provider.rawValue().substr(0, 2)) + (enabled ? "+ " : "- ");
    return all + nlohmann::json(config.intervalSeconds).dump();
}

}  // namespace

TEST(AppConfig, WhatIsUnusableFallsBackAloneAndTheRestCounts) {
    for (const auto& row : fixture("tables/config"))
        EXPECT_EQ(
            nlohmann::json(summary(row[0].is_string() ? row[0].get<std::string>() : row[0].dump())),
            row[1])
            << row;
    EXPECT_EQ(summary("{\"intervalSeconds\":30,\"a\":\"\xFF\"}"), "Cl+ Co+ Ge+ Op+ 20.0");
}

TEST(ModelNaming, KnownAndUnknownNamesGiveShortLabels) {
    for (const auto& [name, label] : fixture("tables/models").get<Labels>())
        EXPECT_EQ(ModelNaming::displayModel(name), label);
    for (const auto& [name, label] : fixture("tables/efforts").get<Labels>())
        EXPECT_EQ(ModelNaming::displayEffort(name), label);
    EXPECT_FALSE(ModelNaming::displayModel("") || ModelNaming::displayEffort(""));
}

TEST(UsageFormat, NumbersRoundAndNeverOverflow) {
    const std::pair<double, const char*> percents[] = {{std::nextafter(0.5, 0), "0%"},
                                                       {42.5, "43%"},
                                                       {-0.5, "-1%"},
                                                       {130.2, "130%"},
                                                       {0x1p63, "—"}};
    for (const auto& [percent, text] : percents)
        EXPECT_EQ(UsageFormat::percentText(percent), text) << percent;
    ScopedClock clock(1'800'000'000);
    const std::pair<double, const char*> resets[] = {
        {0, "now"}, {59.9, "0m"}, {3600, "1h 0m"}, {86399, "23h 59m"}, {280799, "3d 5h"}};
    for (const auto& [ahead, text] : resets)
        EXPECT_EQ(UsageFormat::resetText(Clock::now() + ahead), text) << ahead;
}
