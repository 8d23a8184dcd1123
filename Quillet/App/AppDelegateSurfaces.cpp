// The status item with its popover, and the floating bar.
#include <algorithm>

#include "App/AppDelegate.h"
#include "App/PointText.h"
#include "CLI/CLI.h"
#include "Platform/UserDefaults.h"
#include "Rendering/StatusSummary.h"
#include "Windowing/Screens.h"
#include "Windowing/WindowSystem.h"

namespace {

constexpr const char* originKey = "floatingBarOrigin";

constexpr struct {
    double height = 38;
    double minWidth = 240;    // of the strip
    Rect strip{8, 4, 0, 30};  // as wide as it needs
    double right = 12;        // from the screen's edges, where no place is remembered
    double top = 6;
} bar;

}  // namespace

void AppDelegate::setUpPanel() {
    panelView.hasTouchBar = hasPhysicalTouchBar();
    panelView.settings = settings;
    panelView.onRefresh = [this] { refreshTapped(); };
    panelView.onDonate = [this] { openDonate(); };
    panelView.onToggleSurface = [this](DisplaySurface surface, bool on) {
        setSurface(surface, on);
    };
    panelView.onToggleProvider = [this](Provider provider, bool on) {
        setProviderVisible(provider, on);
    };
    panelView.isProviderVisible = [this](Provider provider) { return isProviderVisible(provider); };
    panelView.update(panelEntries());
}

void AppDelegate::setUpFloatingWindow() {
    floatingWindow.onMoved = [this] { windowDidMove(); };
    floatingWindow.onScreensChanged = [this] { positionFloatingWindow(); };
    floatingWindow.onMenu = [this](QPoint position) { showContextMenu(position); };
}

void AppDelegate::applySurfaces() {
    const auto shows = [this](DisplaySurface surface) {
        return settings.surfaces.contains(surface);
    };
    if (!shows(DisplaySurface::menuBar) && !settings.surfaces.empty()) {
        statusItem.reset();
    } else if (!statusItem) {
        setUpStatusItem();
    }

    if (shows(DisplaySurface::floatingBar)) {
        showFloatingWindow();
    } else {
        floatingWindow.hide();
    }

    if (hasPhysicalTouchBar() && shows(DisplaySurface::touchBar)) {
        installTrayItem();
    } else if (hasPhysicalTouchBar()) {
        removeTrayItem();
    }

    updateStatusItem();
    panelView.settings = settings;
    panelView.update(panelEntries());
}

void AppDelegate::setSurface(DisplaySurface surface, bool on) {
    if (on) {
        settings.surfaces.insert(surface);
    } else {
        settings.surfaces.erase(surface);
    }
    settings.save();
    applySurfaces();
}

void AppDelegate::setUpStatusItem() {
    const bool isLaunching = !timer.isActive();
    statusItem = std::make_unique<StatusItem>(
        [this](const ItemPlace& item) { statusItemTapped(item); }, isLaunching);
    statusItem->onPlaceChange = [this] { positionFloatingWindow(); };
}

void AppDelegate::updateStatusItem() {
    if (!statusItem) return;
    const auto drawnBy = [known = snapshots,
                          providers = enabledProviders()](auto draw) -> StatusContent::Picture {
        return [=](double scale) { return draw(known, providers, scale); };
    };
    statusItem->setContent({drawnBy(StatusSummary::renderForTray),
                            drawnBy(StatusSummary::renderSquare), toolTip(), contextMenu()});
}

/// The text report's lines, without its banner.
std::string AppDelegate::toolTip() const {
    CLI::Collected collected;
    for (const Provider provider : enabledProviders()) {
        if (const auto known = snapshot(provider)) collected.emplace_back(provider, *known);
    }
    std::string report = CLI::textReport(collected);
    report.erase(0, report.find('\n') + 1);
    return report;
}

void AppDelegate::togglePopover(const ItemPlace& item) {
    if (popover.isShown()) {
        popover.close();
    } else if (!item.mayHaveClosed || !popover.justClosed()) {
        popover.show(item.geometry, item.reported);
    }
}

void AppDelegate::showPopover() {
    if (!popover.isShown()) popover.show(statusItem ? statusItem->geometry() : std::nullopt);
}

void AppDelegate::showFloatingWindow() {
    if (snapshots.empty() && WindowSystem::isWayland()) return;  // the first ones set its width
    sizeFloatingWindow();
    positionFloatingWindow();
    floatingWindow.show();
}

void AppDelegate::sizeFloatingWindow() {
    const double width = std::max(floatingStrip.measuredWidth(), bar.minWidth);
    const QSize size(static_cast<int>(width + 2 * bar.strip.x), static_cast<int>(bar.height));
    if (floatingWindow.frame().size() != size) floatingWindow.resizeKeepingOrigin(size);
    floatingStrip.setGeometry(static_cast<int>(bar.strip.x), static_cast<int>(bar.strip.y),
                              static_cast<int>(width), static_cast<int>(bar.strip.height));
}

/// Where the user left it, if that is on a screen; else at the top right, under a status item
/// there. A bar that stands partly beyond an edge stays there.
void AppDelegate::positionFloatingWindow() {
    const Point remembered = PointText::parse(UserDefaults::text(originKey).value_or(""));
    const bool isRemembered = remembered.x != 0 || remembered.y != 0;
    const bool isThere = floatingWindow.origin() == remembered;
    if (isRemembered && isThere && Screens::meet(floatingWindow.frame())) return;
    if (isRemembered && Screens::contain(remembered)) return floatingWindow.setOrigin(remembered);

    const Rect visible = Screens::fromQt(Screens::availableOnPrimary());
    const auto item = statusItem ? statusItem->geometry() : std::nullopt;
    const double itemBottom = item ? Screens::fromQt(*item).y : visible.maxY();
    const bool itemIsAtTop =
        itemBottom > visible.maxY() - bar.height && itemBottom < visible.maxY();
    const double top = itemIsAtTop ? itemBottom : visible.maxY();
    floatingWindow.setOrigin({visible.maxX() - floatingWindow.frame().width() - bar.right,
                              top - floatingWindow.frame().height() - bar.top});
}

void AppDelegate::windowDidMove() const {
    UserDefaults::setText(originKey, PointText::format(floatingWindow.origin()));
}
