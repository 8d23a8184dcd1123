#include "Model/DisplaySettings.h"

#include <gtest/gtest.h>

#include "Tests/Support/TemporaryHome.h"

namespace {

/// The raw values in the order of the surfaces, a space after each.
std::string loaded(bool hasTouchBar) {
    std::string all;
    for (const auto surface : DisplaySettings::load(hasTouchBar).surfaces)
        all.append(surface.rawValue()).append(" ");
    return all;
}

}  // namespace

TEST(DisplaySettings, AUsableChoiceStandsAndAnythingElseIsTheDefault) {
    const TemporaryHome home;
    const std::pair<const char*, const char*> cases[] = {
        {R"(["MenuBar"])", "menuBar touchBar "},
        {R"(["floatingBar",7])", "menuBar touchBar "},
        {R"(["touchBar","dock","touchBar"])", "touchBar "},
        {R"(["touchBar","floatingBar","menuBar"])", "menuBar floatingBar touchBar "}};
    for (const auto& [stored, expected] : cases) {
        home.write(".config/quillet/defaults.json",
                   std::string("{\"enabledSurfaces\":") + stored + "}");
        EXPECT_EQ(loaded(true), expected) << stored;
        DisplaySettings::load(true).save();
        EXPECT_EQ(loaded(false), expected) << stored;
    }
    DisplaySettings{}.save();
    EXPECT_EQ(loaded(false), "menuBar floatingBar ");
}
