// Whether a host shows a wide picture, and whether it tells where the item stands, is known only by
// its program: the process that owns the watcher's name.
#include "StatusItem/NotifierHost.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QFile>

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

constexpr int answerTimeout = 5000;  // milliseconds

constexpr struct {
    const char* process;  // how its name begins; the kernel keeps 15 characters
    bool showsWide;
    bool tellsPosition;
} knownHosts[] = {
    {"panel-", false, true},  // Xfce, "panel-2-systray" by the plugin's number
    {"lxqt-panel", false, true},
    {"plasmashell", false, true},
    {"kded", false, true},             // Plasma's, with its version; the items are plasmashell's
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
    question.callOnTimeout([this] { askOwner(); });
    QObject::connect(
        &ownership, &QDBusServiceWatcher::serviceOwnerChanged, &question,
        [this](const QString&, const QString&, const QString& owner) { follow(owner); });
    for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus.connect(watcherName, watcherPath, watcherName, change, &question, SLOT(start()));
    }
    bus.connect({}, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected",
                &question,
                SLOT(start()));  // the bus itself went
    question.start();
}

NotifierHost::~NotifierHost() = default;

/// A watcher that goes has forgotten its items, even if the same connection takes the name again at
/// once.
void NotifierHost::follow(const QString& owner) {
    if (!owner.isEmpty()) return question.start();
    question.stop();
    answer.reset();
    settle(std::nullopt);
}

void NotifierHost::ask(const QDBusMessage& message, Step then) {
    answer = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(message, answerTimeout));
    QObject::connect(answer.get(), &QDBusPendingCallWatcher::finished, &question, [this, then] {
        const QDBusMessage reply = answer->reply();
        answer.release()->deleteLater();
        (this->*then)(reply);
    });
}

void NotifierHost::askBus(const char* method, const QString& name, Step then) {
    ask(QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus", method)
            << name,
        then);
}

/// By name, since a reply doesn't tell its sender in every version of Qt.
void NotifierHost::askOwner() {
    if (!bus.isConnected()) return settle(std::nullopt);  // nothing would ever answer
    askBus("GetNameOwner", watcherName, &NotifierHost::askWhetherThere);
}

void NotifierHost::askWhetherThere(const QDBusMessage& owner) {
    candidate = owner.arguments().value(0).toString();
    if (owner.type() != QDBusMessage::ReplyMessage) return settle(std::nullopt);
    auto message = QDBusMessage::createMethodCall(candidate, watcherPath,
                                                  "org.freedesktop.DBus.Properties", "Get");
    ask(message << watcherName << "IsStatusNotifierHostRegistered", &NotifierHost::askProcess);
}

void NotifierHost::askProcess(const QDBusMessage& isThere) {
    const bool there = isThere.type() == QDBusMessage::ReplyMessage &&
                       isThere.arguments().value(0).value<QDBusVariant>().variant().toBool();
    if (!there) return settle(std::nullopt);
    askBus("GetConnectionUnixProcessID", candidate, &NotifierHost::found);
}

void NotifierHost::found(const QDBusMessage& process) {
    Host host{candidate};
    const QByteArray name = processName(process.arguments().value(0).toUInt());
    for (const auto& known : knownHosts) {
        if (!name.startsWith(known.process)) continue;
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
