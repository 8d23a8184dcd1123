#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

class QDBusMessage;
class QDBusPendingCallWatcher;

/// Watches the session bus for a tray host that shows StatusNotifier items.
class NotifierHost {
public:
    /// Bus name of the watcher, which hosts register with, and object path and interface there.
    static constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
    static constexpr const char* watcherPath = "/StatusNotifierWatcher";

    struct Host {
        bool showsWide = false;      ///< Shows a wide picture whole instead of squashing it.
        bool tellsPosition = false;  ///< Reports a click with the position on the screen.
    };

    /// `onChange` is called with the first answer, and whenever another host, or none, takes over.
    /// A watcher that never answers is never reported.
    explicit NotifierHost(std::function<void(std::optional<Host>)> onChange);
    ~NotifierHost();

    QDBusConnection connection() const { return bus; }

private:
    using Step = void (NotifierHost::*)(const QDBusMessage& reply);
    void ask(QDBusMessage message, Step then);
    void askWhetherRegistered();
    void askProcess(const QDBusMessage& isRegistered);
    void processFound(const QDBusMessage& process);
    void report(int process);

    const std::function<void(std::optional<Host>)> onChange;
    QDBusConnection bus;
    QDBusServiceWatcher ownership;
    QTimer recheck;  ///< Its slot `start` is what the bus's signals are connected to.
    std::unique_ptr<QDBusPendingCallWatcher> answer;
    std::optional<int> reported;  ///< The process of the newest `onChange`, 0 if unknown.
};
