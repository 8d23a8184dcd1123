#include "StatusItem/NotifierItem.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QtEndian>

#include "StatusItem/NotifierAdaptor.h"
#include "Windowing/FloatingWindow.h"
#include "Windowing/Screens.h"
#include "Windowing/WindowSystem.h"

QDBusArgument& operator<<(QDBusArgument& out, const NotifierPixmap& pixmap) {
    out.beginStructure();
    out << pixmap.width << pixmap.height << pixmap.pixels;
    out.endStructure();
    return out;
}

QDBusArgument& operator<<(QDBusArgument& out, const NotifierToolTip& toolTip) {
    out.beginStructure();
    out << toolTip.iconName << toolTip.icon << toolTip.title << toolTip.markup;
    out.endStructure();
    return out;
}

// Qt DBus asks for readers too, but nobody sends such values to us.
const QDBusArgument& operator>>(const QDBusArgument& in, NotifierPixmap&) {
    return in;
}
const QDBusArgument& operator>>(const QDBusArgument& in, NotifierToolTip&) {
    return in;
}

namespace {

const QString itemPath = QStringLiteral("/StatusNotifierItem");
constexpr int cellSize = 22;  // points

NotifierPixmap pixmap(const QImage& image) {
    QImage pixels = image.convertToFormat(QImage::Format_ARGB32);
    qToBigEndian<quint32>(pixels.constBits(), pixels.sizeInBytes() / 4, pixels.bits());
    return {pixels.width(),
            pixels.height(),
            {reinterpret_cast<const char*>(pixels.constBits()), pixels.sizeInBytes()}};
}

QString uniqueService() {
    static int count = 0;
    return QStringLiteral("org.kde.StatusNotifierItem-%1-%2")
        .arg(QCoreApplication::applicationPid())
        .arg(++count);
}

}  // namespace

void NotifierAdaptor::show(const std::vector<QImage>& newImages, const QString& newMarkup) {
    if (std::exchange(images, newImages) != newImages) emit NewIcon();
    if (std::exchange(markup, newMarkup) != newMarkup) emit NewToolTip();
}

QList<NotifierPixmap> NotifierAdaptor::iconPixmap() const {
    QList<NotifierPixmap> pixmaps;
    for (const QImage& image : images)
        pixmaps << pixmap(image);
    return pixmaps;
}

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
    qDBusRegisterMetaType<NotifierPixmap>();
    qDBusRegisterMetaType<QList<NotifierPixmap>>();
    qDBusRegisterMetaType<NotifierToolTip>();
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
