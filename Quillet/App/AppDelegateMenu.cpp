// The context menu and its choices, which the panel's buttons offer too.
#include <QCoreApplication>
#include <QDesktopServices>
#include <QUrl>
#include <algorithm>

#include "App/AppDelegate.h"
#include "Platform/UserDefaults.h"

namespace {

constexpr const char* donationPage = "https://zendrik.com/#donate";

// In the order of DisplaySurface's cases.
constexpr const char* surfaceTitles[] = {"  Menu Bar", "  Floating Bar (always on top)",
                                         "  Touch Bar"};
static_assert(std::size(surfaceTitles) == DisplaySurface::allCases().size());

MenuItem heading(const char* title) {
    return {title, {}, {}, {}};
}

MenuItem command(const char* title, std::optional<char> key, std::function<void()> action) {
    return {title, key, {}, std::move(action)};
}

}  // namespace

MenuItems AppDelegate::contextMenu() {
    const bool hasTouchBar = hasPhysicalTouchBar();
    MenuItems items{heading("Show In")};
    for (const DisplaySurface surface : DisplaySurface::allCases()) {
        if (surface != DisplaySurface::touchBar || hasTouchBar)
            items.push_back(surfaceItem(surface));
    }
    items.push_back({});
    items.push_back(heading("Providers"));
    const auto shown = enabledProviders();
    for (const Provider provider : Provider::allCases())
        items.push_back(providerItem(provider, std::ranges::count(shown, provider) > 0));
    items.push_back({});
    items.push_back(command("Refresh", 'r', [this] { refreshTapped(); }));
    if (hasTouchBar && settings.surfaces.contains(DisplaySurface::touchBar)) {
        items.push_back(command("Expand on Touch Bar", 't', [this] { presentModalTapped(); }));
    }
    items.push_back(command("Support zendrik — Donate…", {}, openDonate));
    items.push_back({});
    items.push_back(command("Quit Quillet", 'q', [] { QCoreApplication::quit(); }));
    return items;
}

MenuItem AppDelegate::surfaceItem(DisplaySurface surface) {
    return {surfaceTitles[surface], {}, settings.surfaces.contains(surface), [this, surface] {
                toggleSurface(surface);
            }};
}

MenuItem AppDelegate::providerItem(Provider provider, bool isVisible) {
    return {"  " + std::string(provider.rawValue()), {}, isVisible, [this, provider] {
                toggleProvider(provider);
            }};
}

void AppDelegate::toggleSurface(DisplaySurface surface) {
    setSurface(surface, !settings.surfaces.contains(surface));
}

void AppDelegate::toggleProvider(Provider provider) {
    setProviderVisible(provider, !isProviderVisible(provider));
}

void AppDelegate::setProviderVisible(Provider provider, bool on) {
    auto shown = enabledProviders();
    std::erase(shown, provider);
    // Switching off the last one leaves it shown.
    if (on || shown.empty()) shown.push_back(provider);
    std::ranges::sort(shown);

    std::vector<std::string> stored(shown.size());
    std::ranges::transform(shown, stored.begin(),
                           [](Provider visible) { return std::string(visible.rawValue()); });
    UserDefaults::setTextArray(visibleProvidersKey, stored);
    refresh();
    applySurfaces();
}

void AppDelegate::openDonate() {
    QDesktopServices::openUrl(QUrl(donationPage));
}
