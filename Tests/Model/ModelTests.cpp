#include <gtest/gtest.h>

#include "Model/AppConfig.h"
#include "Model/DisplaySettings.h"
#include "Model/ModelNaming.h"
#include "Model/UsageFormat.h"
#include "Tests/Support/Fixture.h"
#include "Tests/Support/StoppedClock.h"
#include "Tests/Support/TemporaryHome.h"

/// "Cl+ Co- Ge+ Op+ 20.0": the entries in order, "+" for an enabled one, and the interval.
static std::string summary(std::string_view text) {
    const auto config = AppConfig::decode(text);
    std::string all;
    for (const auto& [provider, enabled] : config.entries)
        all += std::string(provider.rawValue().substr(0, 2)) + (enabled ? "+ " : "- ");
    return all + nlohmann::json(config.intervalSeconds).dump();
}

TEST(AppConfig, WhatIsUnusableFallsBackAloneAndTheRestCounts) {
    const auto model = fixture("model");
    for (const auto& row : model["configurations"])
        EXPECT_EQ(nlohmann::json(summary(row[0].dump())), row[1]) << row;
}

TEST(DisplaySettings, AUsableChoiceStandsAndAnythingElseIsTheDefault) {
    using enum DisplaySurface::Case;
    using Surfaces = std::set<DisplaySurface>;
    const TemporaryHome home;
    const std::pair<const char*, Surfaces> cases[] = {
        {R"(["MenuBar"])", {menuBar, touchBar}},
        {R"(["touchBar","dock","touchBar"])", {touchBar}},
        {R"(["touchBar","floatingBar","menuBar"])", {menuBar, floatingBar, touchBar}}};
    for (const auto& [stored, expected] : cases) {
        home.write(".config/quillet/defaults.json",
                   std::string("{\"enabledSurfaces\":") + stored + "}");
        DisplaySettings::load(true).save();
        EXPECT_EQ(DisplaySettings::load(false).surfaces, expected) << stored;
    }
    DisplaySettings{}.save();
    EXPECT_EQ(DisplaySettings::load(false).surfaces, (Surfaces{menuBar, floatingBar}));
}

TEST(ModelNaming, KnownAndUnknownNamesGiveShortLabels) {
    const auto labels = fixture("model");
    for (const auto& [name, label] : labels["models"].items())
        EXPECT_EQ(ModelNaming::displayModel(name), label.get<std::string>());
    for (const auto& [name, label] : labels["efforts"].items())
        EXPECT_EQ(ModelNaming::displayEffort(name), label.get<std::string>());
}

TEST(UsageFormat, NumbersRoundAndNeverOverflow) {
    EXPECT_EQ(UsageFormat::percentText(0x1p63), "—");
    stopClock(1'800'000'000);
    const std::map<double, std::string> resets = {
        {0, "now"}, {59.9, "0m"}, {3600, "1h 0m"}, {86399, "23h 59m"}, {280799, "3d 5h"}};
    for (const auto& [ahead, text] : resets)
        EXPECT_EQ(UsageFormat::resetText(Clock::now() + ahead), text) << ahead;
}
