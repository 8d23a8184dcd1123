#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "App/FloatingContainerView.h"
#include "App/TouchBar.h"
#include "Model/AppConfig.h"
#include "Model/DisplaySettings.h"
#include "Model/UsageSnapshot.h"
#include "PanelView/PanelView.h"
#include "StatusItem/StatusItem.h"
#include "StripView/StripView.h"
#include "Windowing/ContextMenu.h"
#include "Windowing/FloatingWindow.h"
#include "Windowing/MenuItem.h"
#include "Windowing/Popover.h"

/// The running application: the latest snapshots and every surface that shows them. Main thread
/// only. Collections run in the background and deliver a finished table.
class AppDelegate : public QObject {
public:
    using Snapshots = std::map<Provider, UsageSnapshot>;

    static constexpr const char* trayIdentifier = "com.zendrik.quillet.summary";
    static constexpr const char* stripIdentifier = "com.zendrik.quillet.strip";
    static constexpr const char* visibleProvidersKey = "visibleProviders";  ///< User default.

    ~AppDelegate() override;  ///< Ends the process if a collection still runs after 0.5 seconds.

    void applicationDidFinishLaunching();

    /// Starts a collection of the shown providers and returns at once. Passes may overlap; the one
    /// that ends last is shown. While the maximum of passes is running, the next one starts when
    /// one of them ends. Does nothing where the system has no thread for it.
    void refresh();

    /// Shows the figures of a finished collection, in place of all that were shown.
    void apply(Snapshots results);

    static std::vector<Provider> enabledProviders();  ///< The shown ones, in the fixed order.
    static bool isProviderVisible(Provider provider);
    static bool hasPhysicalTouchBar();

    void applySurfaces();
    void setSurface(DisplaySurface surface, bool on);
    void setProviderVisible(Provider provider, bool on);

    void statusItemTapped(const ItemPlace& item) { togglePopover(item); }
    void refreshTapped() { refresh(); }
    void presentModalTapped() { presentModalStrip(); }

    void togglePopover(const ItemPlace& item);
    void showPopover();
    void presentModalStrip();

private:
    // Refresh
    void collect(const std::vector<Provider>& providers);
    std::optional<UsageSnapshot> snapshot(Provider provider) const;
    std::vector<StripView::Entry> stripEntries() const;
    std::vector<PanelView::Entry> panelEntries() const;

    // Surfaces
    void setUpPanel();
    void setUpFloatingWindow();
    void setUpStatusItem();
    void updateStatusItem();
    std::string toolTip() const;
    void showFloatingWindow();
    void sizeFloatingWindow();
    void positionFloatingWindow();
    void windowDidMove() const;

    // Touch Bar
    void installTrayItem();
    void removeTrayItem();
    void updateTrayGlyph();
    void controlStripTapped() { presentModalStrip(); }
    std::optional<TouchBarItem> makeItem(const std::string& identifier);

    // Menu
    MenuItems contextMenu();
    void showContextMenu(QPoint position) { barMenu.show(contextMenu(), position); }
    MenuItem surfaceItem(DisplaySurface surface);
    MenuItem providerItem(Provider provider, bool isVisible);
    void toggleSurface(DisplaySurface surface);
    void toggleProvider(Provider provider);
    static void openDonate();

    const AppConfig config = AppConfig::load();
    Snapshots snapshots;
    PanelView panelView;
    Popover popover{&panelView};
    StripView floatingStrip;
    StripView touchStrip;
    FloatingContainerView floatingContainer{&floatingStrip};
    ContextMenu barMenu;
    FloatingWindow floatingWindow{&floatingContainer, FloatingContainerView::cornerRadius};
    std::unique_ptr<StatusItem> statusItem;  // while the menu bar is a surface
    std::optional<TouchBar> modalTouchBar;   // made when it is first presented
    std::optional<TouchBarItem> trayItem;
    bool trayInstalled = false;
    bool presentedInitialModal = false;
    DisplaySettings settings{{DisplaySurface::menuBar}};
    QTimer timer;
    std::vector<std::future<void>> passes;  // the running ones, and some that have ended
    int running = 0;
    bool isRefreshDue = false;  // when a pass ends
    std::atomic<bool> isEnding = false;
};
