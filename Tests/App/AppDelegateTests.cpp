#include "App/AppDelegate.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <qtestsupport_core.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <QApplication>
#include <QKeyEvent>
#include <future>

#include "App/PointText.h"
#include "PanelView/FlatButton.h"
#include "Platform/HardwareModel.h"
#include "Platform/UserDefaults.h"
#include "Support/HTTP.h"
#include "Tests/Support/StoppedClock.h"
#include "Tests/Support/TemporaryHome.h"

using Texts = std::vector<std::string>;
using QTest::qWaitFor;

/// The program as its user sees it. At the end of a pass the status item's tool tip names the model
/// in Gemini's settings.
class Application : public testing::Test {
protected:
    /// Threads of this niceness that have the process's name, as Qt's don't.
    static int threads(int niceness) {
        int count = 0;
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
            const int nice = getpriority(PRIO_PROCESS, std::stoi(task.path().filename()));
            std::string name;  // stays empty if the thread has ended
            std::ifstream(task.path() / "comm") >> name;
            count += nice == niceness && name == "quillet-desktop";
        }
        return count;
    }
    bool waitForPasses(int running) const {
        const auto areAsMany = [=, this] { return threads(0) <= others && threads(10) == running; };
        return qWaitFor(areAsMany, 20'000);
    }
    void setModel(const std::string& model) {
        EXPECT_TRUE(waitForPasses(0));  // none ends with the old one
        home.write(".gemini/settings.json",
                   R"({"security":{"auth":{"selectedType":"key"}},"model":")" + model + "\"}");
    }
    /// Before the tick 20 seconds after the launch, if it is configured to be no earlier.
    static bool shows(const char* model, int limit = 15'000) {
        return qWaitFor([model] { return toolTip().contains(QString("Gemini: ") + model); }, limit);
    }
    static QString toolTip() {
        for (const QWidget* const window : QApplication::topLevelWidgets())
            if (!window->toolTip().isEmpty()) return window->toolTip();
        return {};
    }
    template <typename Widget>
    static Widget& widget() {
        for (QWidget* const each : QApplication::allWidgets())
            if (auto* const found = dynamic_cast<Widget*>(each)) return *found;
        throw std::runtime_error("no such widget");
    }
    static std::string barOrigin() { return PointText::format(widget<FloatingWindow>().origin()); }

    void launch() {
        app.emplace().applicationDidFinishLaunching();
        for (const bool on : {false, true})  // switched on later, it doesn't wait for a tray
            app->setSurface(DisplaySurface::menuBar, on);
    }
    void refreshWith(const char* model) {
        setModel(model);
        app->refresh();
        EXPECT_TRUE(shows(model));
    }

    /// The rows of the bar's menu, with "x" before a checked one, "-" before an unchecked one, and
    /// headings in brackets. Chooses a row.
    static std::string menu(const QString& chosen = "Show In") {
        QContextMenuEvent click(QContextMenuEvent::Mouse, {}, {});
        QApplication::sendEvent(&widget<FloatingWindow>(), &click);
        QString text;
        for (QAction* const row : QApplication::activePopupWidget()->actions()) {
            const char* const mark = !row->isCheckable() ? "" : row->isChecked() ? "x" : "-";
            text += (row->isEnabled() ? mark + row->text() : "(" + row->text() + ")") + "|";
            if (row->text() == chosen) row->trigger();
        }
        QApplication::processEvents();
        return text.toStdString();
    }

    // ThreadSanitizer starts a thread of its own with the first.
    const int others = (std::async(std::launch::async, [] {}).wait(), threads(0));
    TemporaryHome home;
    std::optional<AppDelegate> app;
};

TEST_F(Application, TheBarStandsWhereItWasLeft) {
    const std::string belowTheItem = "{532, 730}", dragged = "{-20, 300}";
    for (const std::string left : {"{100, 200}", "{799, 0}", "{800, 10}", "left", "{7, 85"}) {
        home.write(".config/quillet/defaults.json",
                   R"({"visibleProviders":["Gemini"],"floatingBarOrigin":")" + left + "\"}");
        launch();
        refreshWith("One");
        const bool isOnScreen = left == "{100, 200}" || left == "{799, 0}";
        EXPECT_EQ(barOrigin(), isOnScreen ? left : belowTheItem);
        auto& bar = widget<FloatingWindow>();
        bar.setOrigin(PointText::parse(dragged));
        bar.onMoved();
        app->setProviderVisible(Provider::codex, true);
        EXPECT_TRUE(qWaitFor([&bar] { return bar.width() > 300; }, 20'000));
        EXPECT_EQ(barOrigin(), dragged) << "moved by a refresh or another width";
        EXPECT_EQ(UserDefaults::text("floatingBarOrigin"), dragged);
        bar.resize(bar.width(), 60);  // as sway does, whose minimum is 50
        EXPECT_EQ(bar.frame().height(), 38) << "taken for a change of the bar's own size";
    }
}

TEST_F(Application, TheMenuFollowsHardwareAndChoices) {
    const std::string head = "(Show In)|x  Menu Bar|x  Floating Bar (always on top)|",
                      providers = "|(Providers)|x  Claude|x  Codex|x  Gemini|x  OpenCode||Refresh|",
                      tail = "Support zendrik — Donate…||Quit Quillet|";
    UserDefaults::setTextArray("visibleProviders", {"Codex", "none", "Claude", "Codex"});
    EXPECT_EQ(AppDelegate::enabledProviders(),
              (std::vector<Provider>{Provider::claude, Provider::codex}));
    UserDefaults::setTextArray("visibleProviders", {"claude"});  // none that is known, so all
    launch();
    EXPECT_EQ(menu(), head + providers + tail);

    HardwareModel::exchangeSource([] { return std::string("MacBookPro16,1"); });
    std::string calls;  // of the system's operations, by their first letters
    auto& operations = TouchBarOperations::shared();
    for (const char* const name : {"addSystemTrayItem:", "removeSystemTrayItem:"})
        operations.itemClass[name] = [&calls, name](auto) { calls += *name; };
    for (const char* const name :
         {"presentSystemModalTouchBar:systemTrayItemIdentifier:", "dismissSystemModalTouchBar:"})
        operations.barClass[name] = [&calls, name](auto) { calls += *name; };
    EXPECT_EQ(menu("  Touch Bar"), head + "-  Touch Bar|" + providers + tail);
    refreshWith("One");
    refreshWith("Two");
    EXPECT_EQ(menu("Expand on Touch Bar"),
              head + "x  Touch Bar|" + providers + "Expand on Touch Bar|" + tail);

    const std::tuple<const char*, bool, bool> surfaces[] = {
        // then there are the item and the bar
        {"  Menu Bar", false, true},
        {"  Floating Bar (always on top)", false, false},
        {"  Touch Bar", true, false},  // or nothing would be left to click
        {"  Menu Bar", true, false}};
    for (const auto& [title, item, bar] : surfaces) {
        menu(title);
        EXPECT_TRUE(qWaitFor([hasItem = item] { return toolTip().isEmpty() != hasItem; })) << title;
        EXPECT_EQ(widget<FloatingWindow>().isVisible(), bar) << title;
    }
    EXPECT_EQ(UserDefaults::textArray("enabledSurfaces"), Texts{"menuBar"});
    menu("  Touch Bar");
    refreshWith("Three");
    EXPECT_FALSE(widget<FloatingWindow>().isVisible()) << "a refresh brings it back";
    EXPECT_EQ(calls, "appdrap") << "presented by itself once each time that it is switched on";

    for (const char* title : {"  Codex", "  Gemini", "  Claude", "  OpenCode"})
        menu(title);
    EXPECT_EQ(UserDefaults::textArray("visibleProviders"), Texts{"OpenCode"});  // the last one
    setModel("None");
    menu("  Gemini");
    EXPECT_EQ(UserDefaults::textArray("visibleProviders"), (Texts{"Gemini", "OpenCode"}));
    EXPECT_TRUE(shows("None"));

    setModel("One");
    QKeyEvent key(QEvent::KeyPress, Qt::Key_R, Qt::ControlModifier);
    QApplication::sendEvent(QApplication::activePopupWidget(), &key);
    EXPECT_TRUE(shows("One") && !QApplication::activePopupWidget());
    setModel("Two");
    widget<PanelView>().refreshButton->click();
    EXPECT_TRUE(shows("Two"));
    QTimer::singleShot(0, [] { menu("Quit Quillet"); });
    QTimer::singleShot(20'000, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
}

TEST_F(Application, WithoutAThreadTheNextTickTriesAgain) {
    stopClock(1'800'000'000);  // the panel tells the minute
    home.write(".config/quillet/config.json", R"({"intervalSeconds": 5})");
    launch();
    refreshWith("One");
    setModel("Two");
    const uid_t own = getuid(), other = own ? own : 65534;  // root has no limit
    EXPECT_EQ(setresuid(other, other, own), 0);
    rlimit limit{};
    getrlimit(RLIMIT_NPROC, &limit);
    const auto usual = std::exchange(limit.rlim_cur, 1);
    setrlimit(RLIMIT_NPROC, &limit);
    for (int i = 0; i < 12; ++i)
        app->refresh();
    EXPECT_FALSE(shows("Two", 200));
    limit.rlim_cur = usual;
    setrlimit(RLIMIT_NPROC, &limit);
    EXPECT_EQ(setresuid(own, own, own), 0);
    prctl(PR_SET_DUMPABLE, 1);  // which leak checkers need
    const auto panel = widget<PanelView>().grab().toImage(),
               bar = widget<FloatingWindow>().grab().toImage();
    EXPECT_TRUE(shows("Two"));
    EXPECT_NE(widget<PanelView>().grab().toImage(), panel);
    EXPECT_NE(widget<FloatingWindow>().grab().toImage(), bar);
}

TEST_F(Application, APassTooManyIsRememberedAndQuittingWaitsForNone) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    home.write(".config/quillet/defaults.json", R"({"visibleProviders":["Claude"]})");
    home.write(".claude/.credentials.json", R"({"claudeAiOauth":{"accessToken":"t"}})");
    setModel("One");
    const int silentServer = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    socklen_t size = sizeof address;
    EXPECT_EQ(listen(silentServer, 99), 0);
    getsockname(silentServer, reinterpret_cast<sockaddr*>(&address), &size);
    HTTP::restart({{}, {"::127.0.0.1:" + std::to_string(ntohs(address.sin_port))}});
    launch();
    for (int i = 0; i < 12; ++i)
        app->refresh();
    EXPECT_TRUE(waitForPasses(8));
    app->setProviderVisible(Provider::gemini, true);
    app->setProviderVisible(Provider::claude, false);
    close(accept(silentServer, nullptr, nullptr));
    EXPECT_TRUE(shows("One") && waitForPasses(7)) << "with the list as it is then";
    close(accept(silentServer, nullptr, nullptr));
    // The pass that ends last replaces the whole table.
    EXPECT_TRUE(qWaitFor([] { return !toolTip().contains("Gemini"); }) && waitForPasses(6));
    // It gives up waiting by ending the process. This one must not end so, as with success.
    EXPECT_EXIT((alarm(5), app.reset(), std::_Exit(7)), testing::ExitedWithCode(7), "");
    EXPECT_TRUE(close(silentServer) == 0 && waitForPasses(0));
}
