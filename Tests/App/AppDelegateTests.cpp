#include "App/AppDelegate.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QThread>
#include <filesystem>

#include "App/PointText.h"
#include "Platform/HardwareModel.h"
#include "Platform/UserDefaults.h"
#include "Support/HTTP.h"
#include "Tests/Support/TemporaryHome.h"

using Snapshots = AppDelegate::Snapshots;
using Texts = std::vector<std::string>;

/// Sees into the delegate and does to it what its surfaces would.
class AppDelegateProbe {
public:
    AppDelegateProbe() { delegate.applicationDidFinishLaunching(); }

    void apply(const Texts& providers, double percent) {
        Snapshots results;
        for (const auto& name : providers) {
            UsageSnapshot snapshot(*Provider::fromRawValue(name));
            snapshot.dailyPercent = percent;
            results.insert_or_assign(snapshot.provider, snapshot);
        }
        delegate.apply(std::move(results));
    }

    void awaitCollection() {
        while (delegate.running > 0)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void awaitSnapshot(Provider provider) {
        while (!delegate.snapshots.contains(provider))
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    /// Without a tray the item comes some seconds after the start.
    void awaitStatusItem() {
        while (!delegate.statusItem->geometry())
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    /// "x Title" for a checked row, "- Title" for an unchecked one, "(Title)" for a heading.
    Texts menu() {
        Texts rows;
        for (const auto& item : delegate.contextMenu()) {
            const std::string key =
                item.keyEquivalent ? std::string(" ^") + *item.keyEquivalent : "";
            const std::string mark = item.checked ? (*item.checked ? "x" : "-") : "";
            std::string row = item.action ? mark : "(";
            row.append(item.title).append(item.action ? key : ")");
            rows.push_back(item.isSeparator() ? "" : row);
        }
        return rows;
    }

    void choose(const std::string& title) {
        for (const auto& item : delegate.contextMenu()) {
            if (item.title == title && item.action) return item.action();
        }
        FAIL() << "no row " << title;
    }

    bool hasStatusItem() const { return delegate.statusItem != nullptr; }
    bool showsBar() const { return delegate.floatingWindow.isVisible(); }
    QSize barSize() const { return delegate.floatingWindow.size(); }
    std::string barOrigin() const { return PointText::format(delegate.floatingWindow.origin()); }
    void dragBar(Point origin) {
        delegate.floatingWindow.setOrigin(origin);
        delegate.floatingWindow.onMoved();
    }
    int running() const { return delegate.running; }
    std::size_t known() const { return delegate.snapshots.size(); }
    std::optional<double> percent(Provider provider) const {
        return delegate.snapshots.at(provider).dailyPercent;
    }
    int panelHeight() const { return delegate.panelView.height(); }
    std::string toolTip() const { return delegate.toolTip(); }
    bool trayItemIsInstalled() const { return delegate.trayInstalled; }
    TouchBarButton& trayButton() { return *delegate.trayItem->button; }
    int timerInterval() const { return delegate.timer.isActive() ? delegate.timer.interval() : 0; }
    const auto& panelSurfaces() const { return delegate.panelView.settings.surfaces; }
    std::optional<TouchBarItem> item(const std::string& identifier) {
        return delegate.makeItem(identifier);
    }

    AppDelegate delegate;
};

/// Claude's endpoint accepts each connection and says nothing, and there is a token for it.
class SilentServer {
public:
    explicit SilentServer(const TemporaryHome& home) {
        home.write(".claude/.credentials.json", R"({"claudeAiOauth":{"accessToken":"t"}})");
        sockaddr_in address{};
        socklen_t size = sizeof address;
        EXPECT_EQ(listen(listening, 99), 0);
        getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size);
        HTTP::restart({{}, {"::127.0.0.1:" + std::to_string(ntohs(address.sin_port))}});
    }
    ~SilentServer() { close(listening); }
    void dropOne() const { close(accept(listening, nullptr, nullptr)); }

private:
    const int listening = socket(AF_INET, SOCK_STREAM, 0);
};

class Application : public testing::Test {
protected:
    ~Application() override {
        HardwareModel::exchangeSource(nullptr);
        TouchBarOperations::shared() = {};
        HTTP::restart({});
    }

    static void useTouchBarMachine() {
        HardwareModel::exchangeSource([] { return std::string("MacBookPro16,1"); });
    }

    /// Every operation writes its name down, with what tells its arguments apart. Bars are
    /// presented and dismissed by older systems under another name.
    Texts& recordTouchBar(const std::string& bar) {
        const auto record = [this](const char* name) {
            return
                [this, name = std::string(name)](const TouchBarOperations::Arguments& arguments) {
                    calls.push_back(name + (arguments.flag ? " true" : "") + arguments.identifier);
                };
        };
        auto& operations = TouchBarOperations::shared();
        for (const char* name : {"addSystemTrayItem:", "removeSystemTrayItem:"})
            operations.itemClass[name] = record(name);
        for (const auto& name : {"presentSystemModal" + bar + ":systemTrayItemIdentifier:",
                                 "dismissSystemModal" + bar + ":"})
            operations.barClass[name] = record(name.c_str());
        operations.framework.emplace();
        for (const char* name : {"DFRElementSetControlStripPresenceForIdentifier",
                                 "DFRSystemModalShowsCloseBoxWhenFrontMost"})
            (*operations.framework)[name] = record(name);
        return calls;
    }

    TemporaryHome home;
    Texts calls;
};

TEST_F(Application, ShowsTheStoredProvidersInTheFixedOrder) {
    const struct {
        const char* stored;
        Texts shown;
    } cases[] = {
        {R"(["Codex","Claude","Codex"])", {"Claude", "Codex"}},
        {R"(["claude"])", {"Claude", "Codex", "Gemini", "OpenCode"}},
        {R"(["Gemini",1])", {"Claude", "Codex", "Gemini", "OpenCode"}},
        {R"(["Gemini","none"])", {"Gemini"}},
    };
    for (const auto& c : cases) {
        home.write(".config/quillet/defaults.json",
                   std::string(R"({"visibleProviders":)") + c.stored + "}");
        Texts shown;
        for (const Provider provider : AppDelegate::enabledProviders())
            shown.emplace_back(provider.rawValue());
        EXPECT_EQ(shown, c.shown) << c.stored;
    }
}

TEST_F(Application, EachCombinationOfSurfacesIsShownAndKept) {
    AppDelegateProbe probe;
    EXPECT_TRUE(probe.hasStatusItem() && probe.showsBar());
    const struct {
        DisplaySurface surface;
        bool on, item, bar;
    } steps[] = {
        {DisplaySurface::menuBar, false, false, true},
        {DisplaySurface::floatingBar, false, true, false},
        {DisplaySurface::touchBar, true, false, false},
        {DisplaySurface::floatingBar, true, false, true},
        {DisplaySurface::menuBar, true, true, true},
        {DisplaySurface::floatingBar, false, true, false},
    };
    for (const auto& step : steps) {
        probe.delegate.setSurface(step.surface, step.on);
        EXPECT_EQ(probe.hasStatusItem(), step.item) << step.surface.rawValue() << step.on;
        EXPECT_EQ(probe.showsBar(), step.bar) << step.surface.rawValue() << step.on;
    }
    EXPECT_EQ(UserDefaults::textArray("enabledSurfaces"), (Texts{"menuBar", "touchBar"}));
}

TEST_F(Application, TheBarStandsWhereItWasLeft) {
    const struct {
        const char *stored, *origin;
    } cases[] = {{"{100, 200}", "{100, 200}"},
                 {"{799, 0}", "{799, 0}"},
                 {"{0, 0}", "{532, 756}"},
                 {"{800, 10}", "{532, 756}"},
                 {"left", "{532, 756}"}};
    for (const auto& c : cases) {
        home.write(".config/quillet/defaults.json",
                   std::string(R"({"visibleProviders":["Claude"],"floatingBarOrigin":")") +
                       c.stored + "\"}");
        AppDelegateProbe probe;
        probe.apply({"Claude"}, 0);
        EXPECT_EQ(probe.barOrigin(), c.origin) << c.stored;
        probe.dragBar({-20, 300});
        probe.apply({"Claude"}, 1);
        EXPECT_EQ(probe.barOrigin(), "{-20, 300}") << "no refresh moves it";
        const QSize before = probe.barSize();
        probe.choose("  Codex");
        probe.apply({"Claude", "Codex"}, 2);
        EXPECT_NE(probe.barSize(), before);
        EXPECT_EQ(probe.barOrigin(), "{-20, 300}") << "and no other width";
        EXPECT_EQ(UserDefaults::text("floatingBarOrigin"), "{-20, 300}");
    }
}

TEST_F(Application, TheMenuFollowsHardwareAndChoices) {
    const Texts head{"(Show In)", "x  Menu Bar", "x  Floating Bar (always on top)"};
    const Texts providers{"",          "(Providers)", "x  Claude", "x  Codex",
                          "x  Gemini", "x  OpenCode", "",          "Refresh ^r"};
    const Texts tail{"Support zendrik — Donate…", "", "Quit Quillet ^q"};
    const auto joined = [](Texts all, const std::vector<Texts>& more) {
        for (const auto& rows : more)
            all.insert(all.end(), rows.begin(), rows.end());
        return all;
    };
    AppDelegateProbe probe;
    EXPECT_EQ(probe.menu(), joined(head, {providers, tail}));
    useTouchBarMachine();
    EXPECT_EQ(probe.menu(), joined(head, {{"-  Touch Bar"}, providers, tail}));
    probe.choose("  Touch Bar");
    EXPECT_EQ(probe.menu(),
              joined(head, {{"x  Touch Bar"}, providers, {"Expand on Touch Bar ^t"}, tail}));

    for (const char* title : {"  Codex", "  Gemini", "  Claude", "  OpenCode"})
        probe.choose(title);
    EXPECT_EQ(UserDefaults::textArray("visibleProviders"), Texts{"OpenCode"})
        << "the last one stays";
    probe.choose("  Gemini");
    probe.choose("  Claude");
    EXPECT_EQ(UserDefaults::textArray("visibleProviders"), (Texts{"Claude", "Gemini", "OpenCode"}));
}

TEST_F(Application, ThePassThatEndsLastIsShown) {
    AppDelegateProbe probe;
    probe.awaitCollection();
    EXPECT_EQ(probe.known(), 4U);
    probe.apply({"Claude", "Codex"}, 20);
    probe.apply({"Claude"}, 90);
    EXPECT_EQ(probe.percent(Provider::claude), 90);
    EXPECT_EQ(probe.known(), 1U) << "the table is replaced as a whole";
    EXPECT_EQ(probe.panelHeight(), 404);
    EXPECT_EQ(probe.barSize(), QSize(938, 38));
    EXPECT_EQ(probe.toolTip(), "Claude: 5h 90% · Wk —\n");
    probe.delegate.setProviderVisible(Provider::codex, false);
    probe.delegate.setProviderVisible(Provider::gemini, false);
    probe.delegate.setProviderVisible(Provider::opencode, false);
    EXPECT_EQ(probe.panelHeight(), 212) << "before the pass ends";
    probe.apply({"Claude"}, 10);
    EXPECT_EQ(probe.barSize(), QSize(256, 38));
}

TEST_F(Application, TheTouchBarIsPresentedOncePerInstallation) {
    const std::string tray = AppDelegate::trayIdentifier;
    const std::string presence = "DFRElementSetControlStripPresenceForIdentifier";
    const Texts installed{"addSystemTrayItem:", presence + " true" + tray};
    useTouchBarMachine();
    for (const std::string bar : {"TouchBar", "FunctionBar"}) {
        SCOPED_TRACE(bar);
        TouchBarOperations::shared() = {};
        auto& made = recordTouchBar(bar);
        const std::string present = "presentSystemModal" + bar + ":systemTrayItemIdentifier:";
        const Texts presented{"DFRSystemModalShowsCloseBoxWhenFrontMost true", present + tray};
        AppDelegateProbe probe;
        EXPECT_EQ(std::exchange(made, {}), installed);
        const QImage glyph = probe.trayButton().image;
        probe.apply({}, 0);
        EXPECT_EQ(std::exchange(made, {}), Texts{}) << "nothing collected yet";
        probe.apply({"Claude"}, 90);
        EXPECT_EQ(std::exchange(made, {}), presented);
        EXPECT_NE(probe.trayButton().image, glyph);
        probe.apply({"Claude"}, 2);
        EXPECT_EQ(std::exchange(made, {}), Texts{}) << "once only";
        probe.trayButton().action();
        EXPECT_EQ(std::exchange(made, {}), presented);
        probe.delegate.setSurface(DisplaySurface::touchBar, false);
        EXPECT_EQ(std::exchange(made, {}), (Texts{"dismissSystemModal" + bar + ":", presence + tray,
                                                  "removeSystemTrayItem:"}));
        probe.delegate.presentModalStrip();
        EXPECT_EQ(made, Texts{}) << "not installed";
        probe.delegate.setSurface(DisplaySurface::touchBar, true);
        EXPECT_EQ(std::exchange(made, {}), installed);
        probe.apply({"Claude"}, 3);
        EXPECT_EQ(std::exchange(made, {}), presented);
        EXPECT_FALSE(probe.item(tray));
        const auto strip = probe.item(AppDelegate::stripIdentifier);
        const auto* view = dynamic_cast<StripView*>(strip ? strip->view : nullptr);
        EXPECT_TRUE(view && view->measuredWidth() > 900) << "of four providers";
    }
}

TEST_F(Application, OnlyTheListedMachinesHaveATouchBar) {
    int listed = 0;
    for (const int year : {12, 13, 14, 15, 16, 17, 18}) {
        for (int kind = 0; kind < 6; ++kind) {
            static std::string model;
            model = "MacBookPro" + std::to_string(year) + "," + std::to_string(kind);
            HardwareModel::exchangeSource([] { return model; });
            const bool expected = (year == 13 || year == 14) ? kind == 2 || kind == 3
                                  : year == 15 || year == 16 ? kind >= 1 && kind <= 4
                                                             : year == 17 && kind == 1;
            EXPECT_EQ(AppDelegate::hasPhysicalTouchBar(), expected) << model;
            listed += expected;
        }
    }
    EXPECT_EQ(listed, 13);
}

TEST_F(Application, ChoicesAndTheTimerStartNewPasses) {
    home.write(".config/quillet/config.json", R"({"intervalSeconds": 7})");
    AppDelegateProbe probe;
    probe.awaitCollection();
    EXPECT_EQ(probe.timerInterval(), 7000);
    const struct {
        const char* row;
        std::size_t collected;
    } cases[] = {{"Refresh", 4}, {"  Codex", 3}, {"  Codex", 4}};
    for (const auto& c : cases) {
        probe.apply({"Claude"}, 50);
        probe.choose(c.row);
        probe.awaitCollection();
        EXPECT_EQ(probe.known(), c.collected) << c.row;
    }
    probe.delegate.setSurface(DisplaySurface::floatingBar, false);
    EXPECT_FALSE(probe.panelSurfaces().contains(DisplaySurface::floatingBar));
}

TEST_F(Application, MissingTouchBarOperationsDoNothing) {
    useTouchBarMachine();
    AppDelegateProbe probe;
    probe.apply({"Claude"}, 1);
    EXPECT_FALSE(probe.trayItemIsInstalled());
    probe.delegate.presentModalStrip();
    probe.delegate.setSurface(DisplaySurface::touchBar, false);
    EXPECT_TRUE(probe.hasStatusItem());
}

TEST_F(Application, AThousandRefreshesLeaveNothingBehind) {
    const auto count = [] {
        const auto entries = [](const char* directory) {
            return std::distance(std::filesystem::directory_iterator(directory),
                                 std::filesystem::directory_iterator());
        };
        return std::vector<std::ptrdiff_t>{QApplication::allWidgets().size(),
                                           entries("/proc/self/fd"), entries("/proc/self/task"),
                                           qApp->findChildren<QObject*>().size()};
    };
    AppDelegateProbe probe;
    const auto refresh = [&probe](int times) {
        for (int i = 0; i < times; ++i) {
            probe.delegate.refresh();
            if (i % 50 == 0) probe.awaitCollection();
        }
        probe.awaitCollection();
    };
    probe.awaitStatusItem();
    refresh(100);
    QThread::msleep(200);  // the system takes a moment to remove a thread that was waited for
    const auto before = count();
    refresh(1000);
    for (int i = 0; i < 200 && count() != before; ++i)
        QThread::msleep(10);
    EXPECT_EQ(count(), before);
}

TEST_F(Application, APassTooManyIsRememberedWithTheListAsItIsThen) {
    home.write(".config/quillet/defaults.json", R"({"visibleProviders":["Claude"]})");
    const SilentServer server(home);
    AppDelegateProbe probe;
    for (int i = 0; i < 12; ++i)
        probe.delegate.refresh();
    EXPECT_EQ(probe.running(), 8);
    int nice = 0;
    for (int i = 0; i < 100 && nice != 8; ++i) {
        QThread::msleep(20);  // the threads have just begun
        nice = 0;
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
            nice += getpriority(PRIO_PROCESS, std::stoi(task.path().filename())) == 10;
    }
    EXPECT_EQ(nice, 8);
    probe.delegate.setProviderVisible(Provider::gemini, true);
    probe.delegate.setProviderVisible(Provider::claude, false);
    server.dropOne();
    probe.awaitSnapshot(Provider::gemini);
    EXPECT_EQ(probe.running(), 7);
}

TEST_F(Application, WithoutAThreadTheNextTickTriesAgain) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto launch = [] {
        AppDelegateProbe probe;
        probe.awaitCollection();
        probe.apply({"Claude"}, 50);
        rlimit limit{};
        getrlimit(RLIMIT_NPROC, &limit);
        const rlimit none{1, limit.rlim_max};
        setrlimit(RLIMIT_NPROC, &none);
        [[maybe_unused]] const int left = setresuid(65534, 65534, 65534);  // root has no limit
        for (int i = 0; i < 12; ++i)
            probe.delegate.refresh();
        const bool isNoneRunning = probe.running() == 0 && probe.known() == 1;
        setrlimit(RLIMIT_NPROC, &limit);
        probe.delegate.refresh();
        probe.awaitCollection();
        std::_Exit(isNoneRunning && probe.known() == 4 ? 7 : EXIT_FAILURE);
    };
    EXPECT_EXIT(launch(), testing::ExitedWithCode(7), "");
}

TEST_F(Application, QuittingWaitsForNoServer) {
    const SilentServer server(home);
    // In a process of its own, since the end gives up waiting by ending that.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    constexpr int inTime = 7;
    const auto quit = [] {
        QElapsedTimer timer;
        {
            AppDelegateProbe probe;
            QThread::msleep(300);
            timer.start();
        }
        std::_Exit(timer.elapsed() < 400 ? inTime : EXIT_FAILURE);
    };
    EXPECT_EXIT(quit(), testing::ExitedWithCode(inTime), "");
}
