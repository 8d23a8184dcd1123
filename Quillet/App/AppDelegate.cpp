#include "App/AppDelegate.h"

#include <malloc.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <new>
#include <system_error>

#include "Platform/HardwareModel.h"
#include "Platform/UserDefaults.h"
#include "Providers/Collectors.h"
#include "Rendering/ProviderChip.h"
#include "Support/HTTP.h"

namespace {

constexpr double chipScale = 2;  // pixels per point

constexpr const char* touchBarModels[] = {
    "MacBookPro13,2", "MacBookPro13,3", "MacBookPro14,2", "MacBookPro14,3", "MacBookPro15,1",
    "MacBookPro15,2", "MacBookPro15,3", "MacBookPro15,4", "MacBookPro16,1", "MacBookPro16,2",
    "MacBookPro16,3", "MacBookPro16,4", "MacBookPro17,1",
};

constexpr int maxPasses = 8;      // at a time; one that hangs must not hold up the next
constexpr int passPriority = 10;  // "nice"
constexpr std::chrono::milliseconds shutdownTimeout(500);

}  // namespace

AppDelegate::~AppDelegate() {
    isEnding = true;
    HTTP::shutDown();
    const auto deadline = std::chrono::steady_clock::now() + shutdownTimeout;
    // A file system may hang for ever. Everything that is kept has been saved already.
    for (const auto& pass : passes)
        if (pass.wait_until(deadline) != std::future_status::ready) std::_Exit(0);
}

void AppDelegate::applicationDidFinishLaunching() {
    UserDefaults::removeUnfinished();
    settings = DisplaySettings::load(hasPhysicalTouchBar());
    setUpPanel();
    setUpFloatingWindow();
    applySurfaces();
    refresh();
    connect(&timer, &QTimer::timeout, this, &AppDelegate::refresh);
    // The timer counts in milliseconds up to 24 days.
    const double milliseconds =
        std::min(config.intervalSeconds * 1000, double(std::numeric_limits<int>::max()));
    timer.setTimerType(Qt::PreciseTimer);
    timer.start(static_cast<int>(milliseconds));
}

void AppDelegate::refresh() {
    isRefreshDue = running == maxPasses;
    if (isRefreshDue) return;
    std::erase_if(passes, [](const auto& pass) {
        return pass.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    try {
        passes.push_back(
            std::async(std::launch::async, &AppDelegate::collect, this, enabledProviders()));
        ++running;
    } catch (const std::system_error&) {
        // There is no thread to be had. The timer tries again.
    }
}

/// A pass, on a thread of its own.
void AppDelegate::collect(const std::vector<Provider>& providers) {
    setpriority(PRIO_PROCESS, 0, passPriority);  // of this thread alone, on Linux
    std::optional<Snapshots> results(std::in_place);
    try {
        for (const Provider provider : providers) {
            if (isEnding) return;
            results->insert_or_assign(provider, Collectors::collect(provider));
        }
    } catch (const std::bad_alloc&) {
        results.reset();
    }
    malloc_trim(0);  // the allocator would keep the room of large logs and replies
    auto deliver = [this, results = std::move(results)]() mutable {
        --running;
        if (results) apply(std::move(*results));
        if (isRefreshDue) refresh();
    };
    QMetaObject::invokeMethod(this, std::move(deliver), Qt::QueuedConnection);
}

void AppDelegate::apply(Snapshots results) {
    const bool collected = !results.empty();
    snapshots = std::move(results);
    updateStatusItem();
    const auto entries = stripEntries();
    touchStrip.update(entries);
    floatingStrip.update(entries);
    const QSize before = floatingWindow.frame().size();
    sizeFloatingWindow();
    // At the top right a wider bar would stand beyond the screen's edge.
    if (floatingWindow.frame().size() != before) positionFloatingWindow();
    if (settings.surfaces.contains(DisplaySurface::floatingBar)) floatingWindow.show();
    updateTrayGlyph();
    panelView.update(panelEntries());

    const bool showsTouchBar =
        hasPhysicalTouchBar() && settings.surfaces.contains(DisplaySurface::touchBar);
    if (showsTouchBar && !presentedInitialModal && collected) {
        presentedInitialModal = true;
        presentModalStrip();
    }
}

std::vector<Provider> AppDelegate::enabledProviders() {
    const auto stored =
        UserDefaults::textArray(visibleProvidersKey).value_or(std::vector<std::string>());
    std::vector<Provider> shown;
    for (const Provider provider : Provider::allCases()) {
        if (std::ranges::find(stored, provider.rawValue()) != stored.end())
            shown.push_back(provider);
    }
    if (!shown.empty()) return shown;
    const auto all = Provider::allCases();
    return {all.begin(), all.end()};
}

bool AppDelegate::isProviderVisible(Provider provider) {
    return std::ranges::count(enabledProviders(), provider) > 0;
}

bool AppDelegate::hasPhysicalTouchBar() {
    return std::ranges::count(touchBarModels, HardwareModel::identifier()) > 0;
}

std::optional<UsageSnapshot> AppDelegate::snapshot(Provider provider) const {
    const auto found = snapshots.find(provider);
    return found == snapshots.end() ? std::nullopt : std::optional(found->second);
}

std::vector<StripView::Entry> AppDelegate::stripEntries() const {
    std::vector<StripView::Entry> entries;
    for (const Provider provider : enabledProviders()) {
        entries.push_back(
            {provider, ProviderChip::picture(provider, chipScale), snapshot(provider)});
    }
    return entries;
}

std::vector<PanelView::Entry> AppDelegate::panelEntries() const {
    std::vector<PanelView::Entry> entries;
    for (const Provider provider : enabledProviders())
        entries.push_back({provider, snapshot(provider)});
    return entries;
}
