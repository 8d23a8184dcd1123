#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string_view>

/// A place where usage is shown. Declaration order is the order in which surfaces are listed.
class DisplaySurface {
public:
    enum Case : std::uint8_t { menuBar, floatingBar, touchBar };

    constexpr DisplaySurface(Case value) : value(value) {}
    constexpr operator Case() const { return value; }

    static constexpr std::array<DisplaySurface, 3> allCases();

    std::string_view rawValue() const;  ///< As stored, for example "menuBar".

    /// Exact match only, case included.
    static std::optional<DisplaySurface> fromRawValue(std::string_view text);

private:
    Case value;
};

constexpr std::array<DisplaySurface, 3> DisplaySurface::allCases() {
    return {menuBar, floatingBar, touchBar};
}

/// The surfaces that the user has switched on, kept in the user defaults.
struct DisplaySettings {
    std::set<DisplaySurface> surfaces;

    /// The stored choice as it stands; without a usable one, the menu bar with the Touch Bar or, on
    /// a machine that has none, with the floating bar. A stored empty choice counts as none.
    static DisplaySettings load(bool hasTouchBar);

    void save() const;
};
