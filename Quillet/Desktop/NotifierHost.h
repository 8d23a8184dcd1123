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
        QString watcher;             ///< Bus name of the connection that takes registrations.
        bool showsWide = false;      ///< Shows a wide picture whole instead of squashing it into a square.
        bool tellsPosition = false;  ///< Says on a click where the item stands.
    };

    /// `onChange` is called with the first answer, and whenever another host, or none, takes the place.
    explicit NotifierHost(std::function<void(std::optional<Host>)> onChange);
    ~NotifierHost();

    QDBusConnection connection() const { return bus; }

private:
    void follow(const QString& owner);
    void ask(const QDBusMessage& question, void (NotifierHost::*then)(const QDBusMessage& reply));
    void askWhetherThere();
    void askWho(const QDBusMessage& reply);
    void found(const QDBusMessage& reply);
    void settle(std::optional<Host> host);

    const std::function<void(std::optional<Host>)> onChange;
    QDBusConnection bus;
    QDBusServiceWatcher ownership;
    QTimer question;  ///< Its start is what the watcher's signals are connected to.
    std::unique_ptr<QDBusPendingCallWatcher> answer;
    QString candidate;
    std::optional<QString> settled;  ///< The watcher of the newest call of `onChange`, empty for no host.
};
