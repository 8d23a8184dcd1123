// Prints for how many milliseconds a refresh holds the main thread, 99 of 100 times: the
// application takes new figures for all four providers and paints all of its surfaces at 2 pixels
// per point.
#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <set>
#include <typeinfo>

#include "App/AppDelegate.h"
#include "Platform/HardwareModel.h"
#include "StatusItem/CornerItem.h"

namespace {

constexpr int rounds = 1000;
constexpr int cornerDelay = 4000;  // milliseconds until the corner item shows; there is no tray

/// Notes which widgets have been painted.
class Painted : public QObject {
public:
    Painted() {
        for (QWidget* const widget : QApplication::allWidgets())
            if (widget->isVisible()) widget->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) widgets.insert(watched);
        return false;
    }

    std::set<const QObject*> widgets;
};

/// A Touch Bar that shows its view in a window.
void provideTouchBar() {
    HardwareModel::exchangeSource([] { return std::string("MacBookPro16,1"); });
    auto& operations = TouchBarOperations::shared();
    operations.framework.emplace();
    const auto nothing = [](const TouchBarOperations::Arguments&) {};
    operations.itemClass = {{"addSystemTrayItem:", nothing}, {"removeSystemTrayItem:", nothing}};
    operations.barClass["presentSystemModalFunctionBar:systemTrayItemIdentifier:"] =
        [](const auto& arguments) {
            const auto item =
                arguments.touchBar->makeItem(arguments.touchBar->defaultItemIdentifiers.front());
            item->view->resize(item->view->sizeHint());
            item->view->show();
        };
}

using Times = std::vector<double>;  // milliseconds

double now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// The time by the clock and this thread's CPU time.
std::pair<double, double> timed(const std::function<void()>& work) {
    const double start = now(CLOCK_MONOTONIC);
    const double startOfWork = now(CLOCK_THREAD_CPUTIME_ID);
    work();
    return {now(CLOCK_MONOTONIC) - start, now(CLOCK_THREAD_CPUTIME_ID) - startOfWork};
}

void printCases(const char* name, Times& times) {
    std::ranges::sort(times);
    std::printf("%.3f ms  a refresh: %s, 99 of 100 times; median %.3f ms\n",
                times[times.size() * 99 / 100], name, times[times.size() / 2]);
}

void handleEventsFor(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// Each round has figures of its own, so that no glow comes from the round before.
AppDelegate::Snapshots figures(int round) {
    AppDelegate::Snapshots results;
    for (const Provider provider : Provider::allCases()) {
        UsageSnapshot snapshot(provider);
        snapshot.connected = true;
        snapshot.planLabel = "Max";
        snapshot.modelLabel = "Opus 4.7";
        snapshot.effortLabel = "High";
        snapshot.dailyPercent = (round * 37 + 23 * static_cast<int>(results.size())) % 101;
        snapshot.weeklyPercent = (round * 53 + 31 * static_cast<int>(results.size())) % 101;
        snapshot.dailyResetAt = Clock::now() + 60 * (round % 300);
        snapshot.weeklyResetAt = Clock::now() + 600 * round;
        results.insert_or_assign(provider, std::move(snapshot));
    }
    return results;
}

void show(AppDelegate& delegate) {
    delegate.applicationDidFinishLaunching();
    delegate.setSurface(DisplaySurface::floatingBar, true);
    handleEventsFor(cornerDelay);
    delegate.apply(figures(0));
    delegate.showPopover();
    handleEventsFor(500);
}

/// Whether the floating bar, the Touch Bar, the panel and the status item are among them.
bool areAllIn(const std::set<const QObject*>& widgets) {
    const auto count = [&widgets](const std::type_info& kind) {
        return std::ranges::count_if(widgets,
                                     [&kind](auto* widget) { return typeid(*widget) == kind; });
    };
    return count(typeid(StripView)) == 2 && count(typeid(PanelView)) == 1 &&
           count(typeid(CornerItem)) == 1;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", "2");
    qputenv("DBUS_SESSION_BUS_ADDRESS",
            "unix:path=/dev/null");  // not the desktop that this is run on
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QApplication application(argc, argv);
    provideTouchBar();
    AppDelegate delegate;
    show(delegate);

    Painted painted;
    Times held;
    Times busy;
    for (int round = 1; round <= rounds; ++round) {
        painted.widgets.clear();
        const auto [wall, processor] = timed([&] {
            delegate.apply(figures(round));
            QApplication::processEvents();
        });
        held.push_back(wall);
        busy.push_back(processor);
        if (!areAllIn(painted.widgets)) return 1;
    }
    printCases("held", held);
    printCases("CPU time", busy);
}
