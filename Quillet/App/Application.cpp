#include "App/Application.h"

#include <sys/signalfd.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "App/AppDelegate.h"
#include "App/ApplicationAdaptor.h"
#include "Windowing/WindowSystem.h"

namespace {

constexpr const char* applicationID = "com.zendrik.Quillet";  // also the desktop entry's name
constexpr const char* objectPath = "/com/zendrik/Quillet";
constexpr int answerTimeout = 3000;  // milliseconds for the application that runs already
constexpr const char* noDisplay = "quillet: there is no display to run on\n";

/// Qt would abort, and leave a core file, where no display answers. Its other messages tell the
/// user nothing.
void handleMessage(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg) return;
    std::fputs(noDisplay, stderr);
    std::_Exit(EXIT_SUCCESS);
}

/// A descriptor on which the event loop reads the signals that ask a program to end. They are
/// blocked before other threads start, so that these inherit the mask.
int openSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGTERM, SIGINT})
        sigaddset(&ending, number);
    struct sigaction inherited {};
    sigaction(SIGHUP, nullptr, &inherited);
    if (inherited.sa_handler != SIG_IGN) sigaddset(&ending, SIGHUP);  // nohup ignores it
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
        return (closesPopup && WindowSystem::isX11()) || QApplication::notify(receiver, event);
    }
};

/// Whether the session has an application already, which then shows its panel.
bool isRunningElsewhere() {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || bus.registerService(applicationID)) return false;
    const auto call =
        QDBusMessage::createMethodCall(applicationID, objectPath, applicationID, "ShowPanel");
    if (bus.call(call, QDBus::Block, answerTimeout).type() != QDBusMessage::ReplyMessage)
        std::fputs("quillet: it runs already, but does not answer\n", stderr);
    return true;
}

}  // namespace

void Application::run() {
    if (!WindowSystem::choose()) {
        std::fputs(noDisplay, stderr);
        return;
    }
    const int signalDescriptor = openSignals();
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
    new ApplicationAdaptor(&delegate);
    // Registered before its name can be found.
    QDBusConnection::sessionBus().registerObject(objectPath, &delegate);
    if (isRunningElsewhere()) return;
    delegate.applicationDidFinishLaunching();
    QApplication::exec();
}
