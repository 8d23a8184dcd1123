// Whether a host shows a wide picture, and whether it tells where the item stands, is known only by its program:
// the process that owns the watcher's name.
#include "Desktop/NotifierHost.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QFile>

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

constexpr struct {
    const char* process;  // how its name begins; the kernel keeps 15 characters
    bool showsWide;
    bool tellsPosition;
} knownHosts[] = {
    {"panel-", false, true},  // Xfce, "panel-2-systray" by the plugin's number
    {"lxqt-panel", false, true},
    {"notification-ar", true, false},  // MATE; passes a point at the panel's edge
    {"waybar", true, false},           // passes a point inside its own tray box
};

QByteArray processName(unsigned process) {
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

}  // namespace

NotifierHost::NotifierHost(std::function<void(std::optional<Host>)> onHostChange)
    : onChange(std::move(onHostChange)),
      bus(QDBusConnection::sessionBus()),
      ownership(watcherName, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    question.setSingleShot(true);
    question.callOnTimeout([this] { askWhetherThere(); });
    QObject::connect(&ownership, &QDBusServiceWatcher::serviceOwnerChanged, &question,
                     [this](const QString&, const QString&, const QString& owner) { follow(owner); });
    for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus.connect(watcherName, watcherPath, watcherName, change, &question, SLOT(start()));
    }
    bus.connect({}, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected", &question,
                SLOT(start()));  // the bus itself went
    question.start();
}

NotifierHost::~NotifierHost() = default;

/// A watcher that goes has forgotten its items, even if the same connection takes the name again at once.
void NotifierHost::follow(const QString& owner) {
    if (!owner.isEmpty()) return question.start();
    question.stop();
    answer.reset();
    settle(std::nullopt);
}

void NotifierHost::ask(const QDBusMessage& message, void (NotifierHost::*then)(const QDBusMessage&)) {
    answer = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(message));
    QObject::connect(answer.get(), &QDBusPendingCallWatcher::finished, &question, [this, then] {
        const QDBusMessage reply = answer->reply();
        answer.release()->deleteLater();
        (this->*then)(reply);
    });
}

void NotifierHost::askWhetherThere() {
    if (!bus.isConnected()) return settle(std::nullopt);  // nothing would ever answer
    auto message =
        QDBusMessage::createMethodCall(watcherName, watcherPath, "org.freedesktop.DBus.Properties", "Get");
    message << watcherName << "IsStatusNotifierHostRegistered";
    message.setAutoStartService(false);
    ask(message, &NotifierHost::askWho);
}

void NotifierHost::askWho(const QDBusMessage& reply) {
    const bool there = reply.type() == QDBusMessage::ReplyMessage &&
                       reply.arguments().value(0).value<QDBusVariant>().variant().toBool();
    if (!there) return settle(std::nullopt);
    candidate = reply.service();
    auto message = QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                  "org.freedesktop.DBus", "GetConnectionUnixProcessID");
    message << candidate;
    ask(message, &NotifierHost::found);
}

void NotifierHost::found(const QDBusMessage& reply) {
    Host host{candidate};
    const QByteArray process = processName(reply.arguments().value(0).toUInt());
    for (const auto& known : knownHosts) {
        if (!process.startsWith(known.process)) continue;
        host.showsWide = known.showsWide;
        host.tellsPosition = known.tellsPosition;
    }
    settle(host);
}

void NotifierHost::settle(std::optional<Host> host) {
    const QString watcher = host ? host->watcher : QString();
    if (settled == watcher) return;
    settled = watcher;
    onChange(std::move(host));
}
