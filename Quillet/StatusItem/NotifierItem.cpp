#include "StatusItem/NotifierItem.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include "StatusItem/NotifierAdaptor.h"
#include "Windowing/FloatingWindow.h"
#include "Windowing/Screens.h"
#include "Windowing/WindowSystem.h"

namespace {

const QString itemPath = QStringLiteral("/StatusNotifierItem");
constexpr int cellSize = 22;  // points

QString uniqueService() {
    static int count = 0;
    return QStringLiteral("org.kde.StatusNotifierItem-%1-%2")
        .arg(QCoreApplication::applicationPid())
        .arg(++count);
}

}  // namespace

NotifierItem::NotifierItem(const QDBusConnection& connection, NotifierHost::Host shownBy,
                           std::function<void()> registration, Activate activation)
    : bus(connection),
      host(shownBy),
      onRegistered(std::move(registration)),
      onActivate(std::move(activation)),
      service(uniqueService()),
      adaptor(new NotifierAdaptor(this, [this](QPoint position) { activate(position); })),
      menu(new ExportedMenu(&menuObject)) {
    menu->onOpenChange = [this](bool open) { hideBars(open); };
    bus.registerObject(itemPath, this);
    bus.registerObject(NotifierAdaptor::menuPath, &menuObject);
    bus.registerService(service);
}

/// Hosts drop the item when its name goes.
NotifierItem::~NotifierItem() {
    hideBars(false);
    bus.unregisterService(service);
}

/// Registers with the first picture, since not every host asks again for one that was missing.
void NotifierItem::setContent(const StatusContent& content) {
    menu->setItems(content.menu);
    adaptor->show(StatusContent::sizes(host.showsWide ? content.wide : content.square),
                  content.markup());
    if (!std::exchange(isRegistered, true)) registerItem();
}

void NotifierItem::registerItem() {
    auto message =
        QDBusMessage::createMethodCall(NotifierHost::watcherName, NotifierHost::watcherPath,
                                       NotifierHost::watcherName, "RegisterStatusNotifierItem");
    message.setAutoStartService(false);
    auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(message << service), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        if (!answer->isError()) onRegistered();
    });
}

/// KWin stacks bars above the menus of Wayland panels, and nobody tells where the menu will be.
void NotifierItem::hideBars(bool isMenuOpen) const {
    const bool isCovered = isMenuOpen && WindowSystem::isXwaylandOf("KWin");
    FloatingWindow::hideBarsAt(this, isCovered ? Screens::desktop() : QRect());
}

void NotifierItem::activate(QPoint position) {
    const QPoint reported = Screens::fromNative(position);
    if (host.tellsPosition) {
        place = QRect(0, 0, cellSize, cellSize);
        place->moveCenter(reported);
    }
    onActivate({place, reported});
}
