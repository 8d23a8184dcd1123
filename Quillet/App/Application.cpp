#include "App/Application.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QSocketNotifier>
#include <QThreadPool>
#include <atomic>
#include <cerrno>
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
constexpr unsigned endTimeout = 3;   // seconds from a signal on
constexpr const char* noDisplay = "quillet: there is no display to run on\n";

/// Qt would abort, and leave a core file, where no display answers. Its other messages tell the
/// user nothing.
void handleMessage(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg) return;
    std::fputs(noDisplay, stderr);
    std::_Exit(EXIT_SUCCESS);
}

int endRequests = -1;  // an eventfd, which the event loop reads

/// Asks the event loop to end the program. The alarm ends it where the event loop hangs: a call to
/// the X server or the session bus may never return.
void requestEnd(int) {
    static std::atomic_flag isRequested;
    const int error = errno;
    if (!isRequested.test_and_set()) alarm(endTimeout);
    eventfd_write(endRequests, 1);
    errno = error;
}

void handle(int number, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
    sigset_t handled;
    sigemptyset(&handled);
    sigaddset(&handled, number);
    pthread_sigmask(SIG_UNBLOCK, &handled, nullptr);  // the parent may have blocked it
}

/// Has the signals that ask a program to end write to `endRequests`.
void handleSignals() {
    endRequests = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    handle(SIGALRM, [](int) { std::_Exit(EXIT_SUCCESS); });
    for (const int number : {SIGTERM, SIGINT})
        handle(number, requestEnd);
    if (signal(SIGHUP, SIG_IGN) != SIG_IGN) handle(SIGHUP, requestEnd);  // nohup ignores it
}

/// Qt shares out a large fill among threads, and waits for ever where the system has none just
/// then. Newer versions can do without. Older ones get a single thread, which stays.
void keepPaintingThread() {
    qputenv("QT_NO_GUI_THREADPOOL", "1");
    QThreadPool* const pool = QThreadPool::globalInstance();
    pool->setMaxThreadCount(1);
    pool->setExpiryTimeout(-1);
    pool->start([] {});
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
    handleSignals();
    keepPaintingThread();
    qInstallMessageHandler(handleMessage);

    int count = 1;
    char name[] = "quillet";
    char* arguments[] = {name, nullptr};
    GUIApplication application(count, arguments);
    QApplication::setApplicationDisplayName(QStringLiteral("Quillet"));
    QApplication::setDesktopFileName(applicationID);
    QApplication::setQuitOnLastWindowClosed(false);
    QSocketNotifier endRequested(endRequests, QSocketNotifier::Read);
    QObject::connect(&endRequested, &QSocketNotifier::activated, &application,
                     &QCoreApplication::quit);

    AppDelegate delegate;
    new ApplicationAdaptor(&delegate);
    // Registered before its name can be found.
    QDBusConnection::sessionBus().registerObject(objectPath, &delegate);
    if (isRunningElsewhere()) return;
    delegate.applicationDidFinishLaunching();
    QApplication::exec();
}
