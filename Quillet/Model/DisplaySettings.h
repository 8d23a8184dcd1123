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

    static constexpr std::array<DisplaySurface, 3> allCases() {
        return {menuBar, floatingBar, touchBar};
    }

    /// As stored, for example "menuBar".
    constexpr std::string_view rawValue() const { return rawValues[value]; }

    /// Exact match only, case included.
    static std::optional<DisplaySurface> fromRawValue(std::string_view text);

private:
    static constexpr std::string_view rawValues[] = {"menuBar", "floatingBar", "touchBar"};

    Case value;
};

/// The surfaces that the user has switched on, kept in the user defaults.
struct DisplaySettings {
    std::set<DisplaySurface> surfaces;

    /// The stored choice. Without a usable one, or if it is empty, the menu bar with the Touch Bar
    /// or, on a machine that has none, with the floating bar.
    static DisplaySettings load(bool hasTouchBar);

    void save() const;
};
