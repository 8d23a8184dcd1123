#include "Model/DisplaySettings.h"

#include <gtest/gtest.h>

#include "Tests/Support/TemporaryHome.h"

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
