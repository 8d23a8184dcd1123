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
    struct Host {
        QString watcher;  ///< Bus name of the connection that takes registrations.
        bool showsWide =
            false;  ///< Shows a wide picture whole instead of squashing it into a square.
        bool tellsPosition = false;  ///< Says on a click where the item stands.
    };

    /// `onChange` is called with the first answer, and whenever another host, or none, takes the
    /// place.
    explicit NotifierHost(std::function<void(std::optional<Host>)> onChange);
    ~NotifierHost();

    QDBusConnection connection() const { return bus; }

private:
    void follow(const QString& owner);
    using Step = void (NotifierHost::*)(const QDBusMessage& reply);
    void ask(const QDBusMessage& question, Step then);
    void askBus(const char* method, const QString& name, Step then);
    void askOwner();
    void askWhetherThere(const QDBusMessage& owner);
    void askProcess(const QDBusMessage& isThere);
    void found(const QDBusMessage& process);
    void settle(std::optional<Host> host);

    const std::function<void(std::optional<Host>)> onChange;
    QDBusConnection bus;
    QDBusServiceWatcher ownership;
    QTimer question;  ///< Its start is what the watcher's signals are connected to.
    std::unique_ptr<QDBusPendingCallWatcher> answer;
    QString candidate;  ///< The watcher that is being asked about.
    std::optional<QString>
        settled;  ///< The watcher of the newest call of `onChange`, empty for no host.
};
