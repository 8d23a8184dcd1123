#include "App/AppDelegate.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <qtestsupport_core.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <QApplication>
#include <QContextMenuEvent>

#include "App/PointText.h"
#include "PanelView/FlatButton.h"
#include "Platform/HardwareModel.h"
#include "Platform/UserDefaults.h"
#include "Support/HTTP.h"
#include "Tests/Support/TemporaryHome.h"

using Texts = std::vector<std::string>;
using QTest::qWaitFor;

/// The program as its user sees it. A pass shows in the status item's tool tip how many requests
/// Gemini's log has.
class Application : public testing::Test {
protected:
    ~Application() override {
        app.reset();
        HardwareModel::exchangeSource(nullptr);
        TouchBarOperations::shared() = {};
        HTTP::restart({});
    }

    static void store(const std::string& defaults) {
        TemporaryHome::write(".config/quillet/defaults.json", defaults);
    }
    static void setRequests(int count) {
        TemporaryHome::write(".gemini/google_accounts.json", "{}");
        std::string log;
        for (int i = 0; i < count; ++i)
            log += "request\n";
        TemporaryHome::write(".gemini/logs/a.log", log);
    }
    /// Accepts each connection and says nothing. Claude has a token for it.
    static int openSilentServer() {
        TemporaryHome::write(".claude/.credentials.json",
                             R"({"claudeAiOauth":{"accessToken":"t"}})");
        const int server = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        socklen_t size = sizeof address;
        EXPECT_EQ(listen(server, 99), 0);
        getsockname(server, reinterpret_cast<sockaddr*>(&address), &size);
        HTTP::restart({{}, {"::127.0.0.1:" + std::to_string(ntohs(address.sin_port))}});
        return server;
    }

    void launch() {
        app.emplace().applicationDidFinishLaunching();
        for (const bool on : {false, true})  // an item that comes later waits for no tray
            app->setSurface(DisplaySurface::menuBar, on);
    }

    template <typename Widget>
    static Widget& widget() {
        for (QWidget* const each : QApplication::allWidgets())
            if (auto* const found = dynamic_cast<Widget*>(each)) return *found;
        throw std::runtime_error("no such widget");
    }
    static QString toolTip() {
        for (const QWidget* const window : QApplication::topLevelWidgets())
            if (!window->toolTip().isEmpty()) return window->toolTip();
        return {};
    }
    static bool shows(int requests, int milliseconds = 10'000) {
        const auto text = QStringLiteral("Gemini: %1 reqs today").arg(requests);
        return qWaitFor([&text] { return toolTip().contains(text); }, milliseconds);
    }
    static std::string barOrigin() { return PointText::format(widget<FloatingWindow>().origin()); }

    /// The rows of the menu that a right click on the bar opens.
    static QList<QAction*> menu() {
        QContextMenuEvent click(QContextMenuEvent::Mouse, {}, {});
        QApplication::sendEvent(&widget<FloatingWindow>(), &click);
        return QApplication::activePopupWidget()->actions();
    }
    /// With "x" before a checked row and "-" before an unchecked one, and headings in brackets.
    static std::string menuText() {
        QString text;
        for (const QAction* const row : menu()) {
            const char* const mark = !row->isCheckable() ? "" : row->isChecked() ? "x" : "-";
            const QString title = mark + row->text() + " " + row->shortcut().toString();
            text += row->isEnabled() ? title.trimmed() + "|" : "(" + title.trimmed() + ")";
        }
        return text.toStdString();
    }
    static void choose(const char* title) {
        for (QAction* const row : menu())
            if (row->text() == title) row->trigger();
        QApplication::processEvents();
    }

    TemporaryHome home;
    std::optional<AppDelegate> app;
};

TEST_F(Application, ShowsTheStoredProvidersInTheFixedOrder) {
    const std::pair<const char*, const char*> cases[] = {
        {R"(["Codex","Claude","Codex"])", "Claude Codex "},
        {R"(["claude"])", "Claude Codex Gemini OpenCode "},
        {R"(["Gemini",1])", "Claude Codex Gemini OpenCode "},
        {R"(["Gemini","none"])", "Gemini "},
    };
    for (const auto& [stored, expected] : cases) {
        store(std::string(R"({"visibleProviders":)") + stored + "}");
        std::string shown;
        for (const Provider provider : AppDelegate::enabledProviders())
            shown.append(provider.rawValue()) += " ";
        EXPECT_EQ(shown, expected) << stored;
    }
}

TEST_F(Application, EachCombinationOfSurfacesIsShownAndKept) {
    launch();
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
        app->setSurface(step.surface, step.on);
        EXPECT_TRUE(qWaitFor([&step] { return toolTip().isEmpty() != step.item; }));
        EXPECT_EQ(widget<FloatingWindow>().isVisible(), step.bar) << step.surface.rawValue();
        EXPECT_EQ(widget<PanelView>().settings.surfaces.contains(step.surface), step.on);
    }
    EXPECT_EQ(UserDefaults::textArray("enabledSurfaces"), (Texts{"menuBar", "touchBar"}));
}

TEST_F(Application, TheBarStandsWhereItWasLeft) {
    const std::string belowTheItem = "{532, 730}";
    const std::pair<std::string, std::string> cases[] = {{"{100, 200}", "{100, 200}"},
                                                         {"{799, 0}", "{799, 0}"},
                                                         {"{800, 10}", belowTheItem},
                                                         {"left", belowTheItem}};
    for (const auto& [left, expected] : cases) {
        store(R"({"visibleProviders":["Gemini"],"floatingBarOrigin":")" + left + "\"}");
        setRequests(1);
        launch();
        EXPECT_TRUE(shows(1));
        EXPECT_EQ(barOrigin(), expected) << left;
        auto& bar = widget<FloatingWindow>();
        bar.setOrigin({-20, 300});
        bar.onMoved();
        setRequests(2);
        app->refresh();
        EXPECT_TRUE(shows(2));
        EXPECT_EQ(barOrigin(), "{-20, 300}") << "no refresh moves it";
        app->setProviderVisible(Provider::codex, true);
        EXPECT_TRUE(qWaitFor([&bar] { return bar.width() > 300; }));
        EXPECT_EQ(barOrigin(), "{-20, 300}") << "and no other width";
        EXPECT_EQ(UserDefaults::text("floatingBarOrigin"), "{-20, 300}");
    }
}

TEST_F(Application, TheMenuFollowsHardwareAndChoices) {
    const std::string head = "(Show In)x  Menu Bar|x  Floating Bar (always on top)|",
                      providers =
                          "|(Providers)x  Claude|x  Codex|x  Gemini|x  OpenCode||"
                          "Refresh Ctrl+R|",
                      tail = "Support zendrik — Donate…||Quit Quillet Ctrl+Q|";
    launch();
    EXPECT_EQ(menuText(), head + providers + tail);
    HardwareModel::exchangeSource([] { return std::string("MacBookPro16,1"); });
    EXPECT_EQ(menuText(), head + "-  Touch Bar|" + providers + tail);
    choose("  Touch Bar");
    EXPECT_EQ(menuText(),
              head + "x  Touch Bar|" + providers + "Expand on Touch Bar Ctrl+T|" + tail);
    for (const char* title : {"  Codex", "  Gemini", "  Claude", "  OpenCode"})
        choose(title);
    EXPECT_EQ(UserDefaults::textArray("visibleProviders"), Texts{"OpenCode"})
        << "the last one stays";
    choose("  Gemini");
    choose("  Claude");
    EXPECT_EQ(UserDefaults::textArray("visibleProviders"), (Texts{"Claude", "Gemini", "OpenCode"}));
}

TEST_F(Application, TheTouchBarIsPresentedOncePerInstallation) {
    HardwareModel::exchangeSource([] { return std::string("MacBookPro16,1"); });
    setRequests(1);
    launch();
    EXPECT_TRUE(shows(1));
    app->presentModalStrip();
    app->setSurface(DisplaySurface::touchBar, false);  // all without any operation

    std::string calls;
    TouchBarItem* tray = nullptr;
    TouchBar* touchBar = nullptr;
    const auto record = [&](TouchBarOperations::Table& table, const std::string& name) {
        table[name] = [&, name](const TouchBarOperations::Arguments& arguments) {
            calls += name + arguments.identifier + (arguments.flag ? " on|" : "|");
            if (arguments.item) tray = arguments.item;
            if (arguments.touchBar) touchBar = arguments.touchBar;
        };
    };
    const std::string summary = AppDelegate::trayIdentifier,
                      presence = "DFRElementSetControlStripPresenceForIdentifier",
                      closeBox = "DFRSystemModalShowsCloseBoxWhenFrontMost",
                      installed = "addSystemTrayItem:|" + presence + summary + " on|";
    for (const std::string bar : {"FunctionBar", "TouchBar"}) {  // on older and newer systems
        const auto present = "presentSystemModal" + bar + ":systemTrayItemIdentifier:",
                   dismiss = "dismissSystemModal" + bar + ":",
                   presented = closeBox + " on|" + present + summary + "|";
        auto& [itemClass, barClass, framework] = TouchBarOperations::shared();
        record(itemClass, "addSystemTrayItem:");
        app->setSurface(DisplaySurface::touchBar, true);
        record(itemClass, "removeSystemTrayItem:");
        record(framework.emplace(), presence);
        record(*framework, closeBox);
        barClass.clear();
        record(barClass, present);
        record(barClass, dismiss);
        app->setSurface(DisplaySurface::touchBar, false);
        calls.clear();
        app->setSurface(DisplaySurface::touchBar, true);
        EXPECT_EQ(std::exchange(calls, {}), installed);
        app->refresh();
        EXPECT_TRUE(qWaitFor([&] { return calls == presented; })) << calls;
        setRequests(2);
        app->refresh();
        EXPECT_TRUE(shows(2));
        tray->button->action();
        EXPECT_EQ(std::exchange(calls, {}), presented + presented) << "by the first pass and a tap";
        const auto strip = touchBar->makeItem(AppDelegate::stripIdentifier);
        const auto* const view = dynamic_cast<StripView*>(strip ? strip->view : nullptr);
        EXPECT_TRUE(view && view->measuredWidth() > 900) << "of four providers";
        app->setSurface(DisplaySurface::touchBar, false);
        app->presentModalStrip();
        EXPECT_EQ(calls, dismiss + "|" + presence + summary + "|removeSystemTrayItem:|");
    }
}

TEST_F(Application, OnlyTheListedMachinesHaveATouchBar) {
    std::string listed;
    for (int i = 12 * 6; i < 19 * 6; ++i) {
        static std::string model;
        model = "MacBookPro" + std::to_string(i / 6) + "," + std::to_string(i % 6);
        HardwareModel::exchangeSource([] { return model; });
        if (AppDelegate::hasPhysicalTouchBar()) listed += model.substr(10) + " ";
    }
    EXPECT_EQ(listed, "13,2 13,3 14,2 14,3 15,1 15,2 15,3 15,4 16,1 16,2 16,3 16,4 17,1 ");
}

TEST_F(Application, ThePanelAndTheTimerStartNewPasses) {
    TemporaryHome::write(".config/quillet/config.json", R"({"intervalSeconds": 5})");
    setRequests(1);
    launch();
    EXPECT_TRUE(shows(1));
    setRequests(2);
    widget<PanelView>().refreshButton->click();
    EXPECT_TRUE(shows(2, 4000));
    setRequests(3);
    EXPECT_TRUE(shows(3, 7000));
}

TEST_F(Application, APassTooManyIsRememberedWithTheListAsItIsThen) {
    store(R"({"visibleProviders":["Claude"]})");
    setRequests(1);
    const int server = openSilentServer();
    launch();
    for (int i = 0; i < 12; ++i)
        app->refresh();
    const auto waitForPasses = [](int expected) {
        return qWaitFor([expected] {
            int nice = 0;
            for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
                nice += getpriority(PRIO_PROCESS, std::stoi(task.path().filename())) == 10;
            return nice == expected;
        });
    };
    EXPECT_TRUE(waitForPasses(8));
    app->setProviderVisible(Provider::gemini, true);
    app->setProviderVisible(Provider::claude, false);
    close(accept(server, nullptr, nullptr));
    EXPECT_TRUE(shows(1) && waitForPasses(7));
    close(accept(server, nullptr, nullptr));
    EXPECT_TRUE(qWaitFor([] { return !toolTip().contains("Gemini"); }))
        << "the pass that ends last replaces the whole table";
    EXPECT_TRUE(waitForPasses(6));
}

TEST_F(Application, WithoutAThreadTheNextTickTriesAgain) {
    setRequests(1);
    launch();
    EXPECT_TRUE(shows(1));
    setRequests(2);
    const uid_t own = getuid(), other = own ? own : 65534;  // root has no limit
    rlimit limit{};
    getrlimit(RLIMIT_NPROC, &limit);
    const rlimit none{1, limit.rlim_max};
    setrlimit(RLIMIT_NPROC, &none);
    EXPECT_EQ(setresuid(other, other, own), 0);
    for (int i = 0; i < 12; ++i)
        app->refresh();
    EXPECT_FALSE(shows(2, 200));
    EXPECT_EQ(setresuid(own, own, own), 0);
    setrlimit(RLIMIT_NPROC, &limit);
    app->refresh();
    EXPECT_TRUE(shows(2));
}

TEST_F(Application, QuittingWaitsForNoServer) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    openSilentServer();
    launch();
    QTest::qWait(300);
    EXPECT_EXIT((app.reset(), std::_Exit(7)), testing::ExitedWithCode(7), "")
        << "it gives up waiting by ending the process";
}
