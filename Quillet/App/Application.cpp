#include "App/Application.h"

#include <malloc.h>
#include <sys/signalfd.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "App/AppDelegate.h"
#include "Windowing/X11.h"

namespace {

constexpr const char* applicationID =
    "com.zendrik.Quillet";  // also the desktop entry's and the icon's name
constexpr const char* objectPath = "/com/zendrik/Quillet";
constexpr const char* showPanel = "ShowPanel";
constexpr int patience = 3000;  // milliseconds for the application that runs already to answer
constexpr const char* noDisplay = "quillet: there is no display to run on\n";

bool isSet(const char* variable) {
    return !qEnvironmentVariableIsEmpty(variable);
}

/// On Wayland a program can't place its windows, keep them above others or on every workspace.
/// Through Xwayland it can, where there is one.
void choosePlatform() {
    if (isSet("WAYLAND_DISPLAY") && isSet("DISPLAY") && !isSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "xcb;wayland");
    }
}

/// The toolkit would abort, and leave a core file, where no display answers. Its other messages are
/// nobody's concern.
void handleMessage(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg) return;
    std::fputs(noDisplay, stderr);
    std::_Exit(EXIT_SUCCESS);
}

/// Makes the signals that ask a program to end readable, for the event loop to notice. Made before
/// any other thread, so that none of them is interrupted instead.
int openSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGTERM, SIGINT})
        sigaddset(&ending, number);
    struct sigaction inherited {};
    sigaction(SIGHUP, nullptr, &inherited);
    if (inherited.sa_handler != SIG_IGN)
        sigaddset(&ending, SIGHUP);  // ignored: started to outlive its terminal
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    return signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
}

/// Qt closes every popup when the program loses the focus. On X11 it learns of that late, so a
/// popup that was opened just after another one closed would vanish.
class GUIApplication : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        const bool closesPopup =
            event->type() == QEvent::ApplicationDeactivate && activePopupWidget();
        return (closesPopup && X11::connection()) || QApplication::notify(receiver, event);
    }
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
    const auto knock =
        QDBusMessage::createMethodCall(applicationID, objectPath, applicationID, showPanel);
    if (bus.call(knock, QDBus::Block, patience).type() != QDBusMessage::ReplyMessage)
        std::fputs("quillet: it runs already, but does not answer\n", stderr);
    return true;
}

}  // namespace

void Application::run() {
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM")) {
        std::fputs(noDisplay, stderr);
        return;
    }
    const int signalDescriptor = openSignals();
    mallopt(M_ARENA_MAX, 2);  // each pass is a thread, which would get a heap of its own
    mallopt(M_MMAP_THRESHOLD,
            128 * 1024);  // the allocator's own start, which it would raise with each picture
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
    QObject::connect(&signalled, &QSocketNotifier::activated, &application,
                     &QCoreApplication::quit);

    AppDelegate delegate;
    Door door(delegate);
    QDBusConnection::sessionBus().registerVirtualObject(objectPath,
                                                        &door);  // before its name can be found
    if (isRunningElsewhere()) return;
    delegate.applicationDidFinishLaunching();
    QApplication::exec();
}
