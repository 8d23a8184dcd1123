#include "Model/DisplaySettings.h"

#include <gtest/gtest.h>

#include "Tests/Support/Fixture.h"
#include "Tests/Support/TemporaryHome.h"

namespace {

/// The raw values in the order of the surfaces.
nlohmann::json surfaces(const DisplaySettings& settings) {
    auto list = nlohmann::json::array();
    for (const auto surface : settings.surfaces)
        list.push_back(surface.rawValue());
    return list;
}

}  // namespace

TEST(DisplaySettings, AUsableChoiceStandsAndAnythingElseIsTheDefault) {
    const TemporaryHome home;
    for (const auto& row :
         fixture("tables/display-settings")) {  // stored, loaded without and with a Touch Bar
        TemporaryHome::write(".config/quillet/defaults.json",
                             "{\"enabledSurfaces\":" + row[0].dump() + "}");
        EXPECT_EQ(surfaces(DisplaySettings::load(false)), row[1]) << row;
        EXPECT_EQ(surfaces(DisplaySettings::load(true)), row[2]) << row;
        DisplaySettings::load(true).save();
        EXPECT_EQ(surfaces(DisplaySettings::load(false)), row[2]) << row;
    }
    DisplaySettings{}.save();
    EXPECT_EQ(surfaces(DisplaySettings::load(false)),
              surfaces({{DisplaySurface::menuBar, DisplaySurface::floatingBar}}));
}
