#include "Model/DisplaySettings.h"

#include "Platform/UserDefaults.h"

namespace {

constexpr const char* key = "enabledSurfaces";

}  // namespace

std::optional<DisplaySurface> DisplaySurface::fromRawValue(std::string_view text) {
    static_assert(std::size(rawValues) == allCases().size());
    for (const DisplaySurface surface : allCases()) {
        if (surface.rawValue() == text) return surface;
    }
    return std::nullopt;
}

DisplaySettings DisplaySettings::load(bool hasTouchBar) {
    const auto stored = UserDefaults::textArray(key).value_or(std::vector<std::string>());
    DisplaySettings settings;
    for (const std::string& text : stored) {
        if (const auto surface = DisplaySurface::fromRawValue(text))
            settings.surfaces.insert(*surface);
    }
    if (settings.surfaces.empty()) {
        settings.surfaces = {DisplaySurface::menuBar,
                             hasTouchBar ? DisplaySurface::touchBar : DisplaySurface::floatingBar};
    }
    return settings;
}

void DisplaySettings::save() const {
    std::vector<std::string> stored;
    for (const DisplaySurface surface : surfaces)
        stored.emplace_back(surface.rawValue());
    UserDefaults::setTextArray(key, stored);
}
