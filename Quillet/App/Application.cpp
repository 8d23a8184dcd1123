#include "App/Application.h"

#include <malloc.h>
#include <sys/signalfd.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "App/AppDelegate.h"
#include "Desktop/X11.h"
#include "Platform/ResidentSet.h"

namespace {

constexpr const char* applicationID = "com.zendrik.Quillet";  // also the desktop entry's and the icon's name
constexpr const char* objectPath = "/com/zendrik/Quillet";
constexpr const char* showPanel = "ShowPanel";
constexpr std::chrono::seconds restsAfter(60);
constexpr const char* noDisplay = "quillet: there is no display to run on\n";

bool isSet(const char* variable) {
    return !qEnvironmentVariableIsEmpty(variable);
}

/// On Wayland a program can't place its windows, keep them above others or on every workspace. Through Xwayland it
/// can, where there is one.
void choosePlatform() {
    if (isSet("WAYLAND_DISPLAY") && isSet("DISPLAY") && !isSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "xcb;wayland");
    }
}

/// The toolkit would abort, and leave a core file, where no display answers. Its other messages are nobody's
/// concern.
void handleMessage(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg) return;
    std::fputs(noDisplay, stderr);
    std::_Exit(EXIT_SUCCESS);
}

/// Makes the signals that ask a program to end readable, for the event loop to notice. Made before any other
/// thread, so that none of them is interrupted instead.
int openSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGTERM, SIGINT})
        sigaddset(&ending, number);
    struct sigaction inherited {};
    sigaction(SIGHUP, nullptr, &inherited);
    if (inherited.sa_handler != SIG_IGN) sigaddset(&ending, SIGHUP);  // ignored: started to outlive its terminal
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    return signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
}

/// The toolkit's application, which gives memory back when nobody has used the program for a while.
class GUIApplication : public QApplication {
public:
    GUIApplication(int& count, char** arguments) : QApplication(count, arguments) {
        untilRest.setSingleShot(true);
        untilRest.callOnTimeout([this] { trimming = std::jthread(ResidentSet::trim); });
        untilRest.start(restsAfter);
    }

    bool notify(QObject* receiver, QEvent* event) override {
        if (isStale(*event)) return true;
        if (isUse(*event, *receiver)) untilRest.start(restsAfter);
        return QApplication::notify(receiver, event);
    }

private:
    /// The toolkit closes every popup when it hears that the program has lost the focus, of which it hears late: a
    /// click soon after another popup closed would seem to do nothing. On X11 a popup has the pointer and the
    /// keyboard to itself and needs no such help.
    static bool isStale(const QEvent& event) {
        return event.type() == QEvent::ApplicationDeactivate && activePopupWidget() && X11::connection();
    }

    /// Clicks that other programs report, a status item's host for one, are seen by the windows that come and go.
    static bool isUse(const QEvent& event, const QObject& receiver) {
        switch (event.type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::KeyPress:
            return true;
        case QEvent::Show:
        case QEvent::Hide:
            return receiver.isWindowType();
        default:
            return false;
        }
    }

    // Refreshes alone run less than half of the code that the start and the user's clicks do.
    QTimer untilRest;
    std::jthread trimming;
};

/// The session's door to the running application, for a second start to knock at.
class Door : public QDBusVirtualObject {
public:
    explicit Door(AppDelegate& delegate) : delegate(delegate) {}

    QString introspect(const QString&) const override {
        return QStringLiteral("<interface name=\"%1\"><method name=\"%2\"/></interface>")
            .arg(applicationID, showPanel);
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() != QLatin1String(showPanel)) return false;
        delegate.showPopover();
        return connection.send(message.createReply());
    }

private:
    AppDelegate& delegate;
};

/// Whether the session has an application already, which then shows its panel.
bool isRunningElsewhere() {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || bus.registerService(applicationID)) return false;
    bus.call(QDBusMessage::createMethodCall(applicationID, objectPath, applicationID, showPanel));
    return true;
}

}  // namespace

void Application::run() {
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM")) {
        std::fputs(noDisplay, stderr);
        return;
    }
    const int signalDescriptor = openSignals();
    mallopt(M_ARENA_MAX, 2);                // each pass is a thread, which would get a heap of its own
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);  // the allocator's own start, which it would raise with each picture
    choosePlatform();
    qInstallMessageHandler(handleMessage);

    int count = 1;
    char name[] = "quillet";
    char* arguments[] = {name, nullptr};
    GUIApplication application(count, arguments);
    QApplication::setApplicationDisplayName(QStringLiteral("Quillet"));
    QApplication::setDesktopFileName(applicationID);
    QApplication::setQuitOnLastWindowClosed(false);
    QSocketNotifier signalled(signalDescriptor, QSocketNotifier::Read);
    QObject::connect(&signalled, &QSocketNotifier::activated, &application, &QCoreApplication::quit);

    AppDelegate delegate;
    Door door(delegate);
    QDBusConnection::sessionBus().registerVirtualObject(objectPath, &door);  // before its name can be found
    if (isRunningElsewhere()) return;
    delegate.applicationDidFinishLaunching();
    QApplication::exec();
}
