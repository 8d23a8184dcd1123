// Only the host's program, the process that owns the watcher's name, tells whether it shows a wide
// picture and where it counts a click from.
#include "StatusItem/NotifierHost.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QFile>
#include <algorithm>
#include <limits>

namespace {

constexpr int noHost = -1;  // in place of a process

// A slow watcher's answer still counts. A timeout would count as no host, and Qt, which is then
// asked for a tray, would block on the same watcher.
constexpr int noTimeout = std::numeric_limits<int>::max();

const struct {
    const char* process;  // how its name begins; the kernel keeps 15 characters
    NotifierHost::Host host;
} knownHosts[] = {
    {"panel-", {false, true}},  // Xfce, "panel-2-systray" by the plugin's number
    {"lxqt-panel", {false, true}},
    {"plasmashell", {false, true}},
    {"kded", {false, true}},             // Plasma's, with its version; the items are plasmashell's
    {"notification-ar", {true, false}},  // MATE; passes a point at the panel's edge
    {"waybar", {true, false}},           // passes a point inside its own tray box
};

QByteArray processName(int process) {
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

}  // namespace

NotifierHost::NotifierHost(std::function<void(std::optional<Host>)> onHostChange)
    : onChange(std::move(onHostChange)),
      bus(QDBusConnection::sessionBus()),
      ownership(watcherName, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    recheck.setSingleShot(true);
    recheck.callOnTimeout([this] { askWhetherRegistered(); });
    QObject::connect(&ownership, &QDBusServiceWatcher::serviceOwnerChanged, &recheck,
                     [this](const QString&, const QString&, const QString& owner) {
                         answer.reset();
                         if (owner.isEmpty()) return report(noHost);
                         reported.reset();  // the new watcher knows no items
                         recheck.start();
                     });
    for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        bus.connect(watcherName, watcherPath, watcherName, change, &recheck, SLOT(start()));
    bus.connect({}, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected",
                &recheck, SLOT(start()));
    recheck.start();
}

NotifierHost::~NotifierHost() = default;

void NotifierHost::ask(QDBusMessage message, Step then) {
    message.setAutoStartService(false);
    answer = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(message, noTimeout));
    QObject::connect(answer.get(), &QDBusPendingCallWatcher::finished, &recheck, [this, then] {
        const QDBusMessage reply = answer->reply();
        answer.release()->deleteLater();
        (this->*then)(reply);
    });
}

void NotifierHost::askWhetherRegistered() {
    if (!bus.isConnected()) return report(noHost);  // nothing would ever answer
    auto message = QDBusMessage::createMethodCall(watcherName, watcherPath,
                                                  "org.freedesktop.DBus.Properties", "Get");
    ask(message << watcherName << "IsStatusNotifierHostRegistered", &NotifierHost::askProcess);
}

void NotifierHost::askProcess(const QDBusMessage& isRegistered) {
    const auto value = isRegistered.arguments().value(0).value<QDBusVariant>().variant();
    if (!value.toBool()) return report(noHost);
    auto message =
        QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus", "GetConnectionUnixProcessID");
    ask(message << watcherName, &NotifierHost::processFound);
}

/// A bus that doesn't know the process answers with an error or 0.
void NotifierHost::processFound(const QDBusMessage& process) {
    report(process.arguments().value(0).toInt());
}

void NotifierHost::report(int process) {
    if (reported == process) return;
    reported = process;
    if (process == noHost) return onChange(std::nullopt);
    const QByteArray name = processName(process);
    const auto* const known = std::ranges::find_if(
        knownHosts, [&name](const auto& each) { return name.startsWith(each.process); });
    onChange(known == std::end(knownHosts) ? Host() : known->host);
}
