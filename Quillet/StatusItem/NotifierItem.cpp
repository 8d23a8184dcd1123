#include "StatusItem/NotifierItem.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QtEndian>

#include "StatusItem/BusProperties.h"
#include "Windowing/FloatingWindow.h"
#include "Windowing/Screens.h"
#include "Windowing/X11.h"

namespace {

const QString interfaceName = QStringLiteral("org.kde.StatusNotifierItem");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuPath = QStringLiteral("/MenuBar");
constexpr int cellSize = 22;  // points

const char* const description = R"xml(<interface name="org.kde.StatusNotifierItem">
<property name="Category" type="s" access="read"/>
<property name="Id" type="s" access="read"/>
<property name="Title" type="s" access="read"/>
<property name="Status" type="s" access="read"/>
<property name="WindowId" type="i" access="read"/>
<property name="IconName" type="s" access="read"/>
<property name="IconPixmap" type="a(iiay)" access="read"/>
<property name="IconThemePath" type="s" access="read"/>
<property name="OverlayIconName" type="s" access="read"/>
<property name="AttentionIconName" type="s" access="read"/>
<property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
<property name="ItemIsMenu" type="b" access="read"/>
<property name="Menu" type="o" access="read"/>
<method name="Activate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
<method name="SecondaryActivate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
<method name="Scroll"><arg type="i" direction="in"/><arg type="s" direction="in"/></method>
<signal name="NewIcon"/>
<signal name="NewToolTip"/>
</interface>)xml";

struct Pixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;  ///< ARGB, most significant byte first.
};

struct ToolTip {
    QString title;
    QString text;
};

QDBusArgument& operator<<(QDBusArgument& out, const Pixmap& pixmap) {
    out.beginStructure();
    out << pixmap.width << pixmap.height << pixmap.pixels;
    out.endStructure();
    return out;
}

QDBusArgument& operator<<(QDBusArgument& out, const ToolTip& toolTip) {
    out.beginStructure();
    out << QString() << QList<Pixmap>() << toolTip.title
        << toolTip.text;  // the first two: an icon of its own
    out.endStructure();
    return out;
}

// Only ever sent.
const QDBusArgument& operator>>(const QDBusArgument& in, Pixmap&) {
    return in;
}
const QDBusArgument& operator>>(const QDBusArgument& in, ToolTip&) {
    return in;
}

Pixmap pixmap(const QImage& image) {
    QImage pixels = image.convertToFormat(QImage::Format_ARGB32);
    const auto count = pixels.sizeInBytes() / 4;
    qToBigEndian<quint32>(pixels.constBits(), count, pixels.bits());
    return {pixels.width(),
            pixels.height(),
            {reinterpret_cast<const char*>(pixels.constBits()), pixels.sizeInBytes()}};
}

QString uniqueService() {
    static int count = 0;
    return QStringLiteral("%1-%2-%3")
        .arg(interfaceName)
        .arg(QCoreApplication::applicationPid())
        .arg(++count);
}

}  // namespace

NotifierItem::NotifierItem(const QDBusConnection& connection, NotifierHost::Host shownBy,
                           std::function<void()> registration, StatusItem::Activate activation)
    : bus(connection),
      host(std::move(shownBy)),
      onRegistered(std::move(registration)),
      onActivate(std::move(activation)),
      service(uniqueService()),
      menu(connection, menuPath) {
    menu.onOpenChange = [this](bool open) { makeWay(open); };
    qDBusRegisterMetaType<Pixmap>();
    qDBusRegisterMetaType<QList<Pixmap>>();
    qDBusRegisterMetaType<ToolTip>();
    bus.registerVirtualObject(itemPath, this);
    bus.registerService(service);
}

/// Hosts drop the item when its name goes.
NotifierItem::~NotifierItem() {
    makeWay(false);
    bus.unregisterService(service);
    bus.unregisterObject(itemPath);
}

/// Registers with the first picture, since not every host asks again for one that was missing.
void NotifierItem::setContent(const StatusContent& content) {
    menu.setItems(content.menu);
    const auto pictures = StatusContent::sizes(host.showsWide ? content.wide : content.square);
    if (std::exchange(images, pictures) != pictures) announce("NewIcon");
    const QString text = content.markup();
    if (std::exchange(toolTip, text) != text) announce("NewToolTip");
    if (!std::exchange(registered, true)) registerItem();
}

void NotifierItem::registerItem() {
    auto message = QDBusMessage::createMethodCall(host.watcher, "/StatusNotifierWatcher",
                                                  "org.kde.StatusNotifierWatcher",
                                                  "RegisterStatusNotifierItem");
    auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(message << service), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        if (!answer->isError()) onRegistered();
    });
}

/// KWin stacks bars above the menus of Wayland panels. Where the menu will be, nobody tells.
void NotifierItem::makeWay(bool isMenuOpen) const {
    const bool isCovered = isMenuOpen && Screens::areXwayland() && X11::windowManager() == "KWin";
    FloatingWindow::makeWay(this, isCovered ? Screens::desktop() : QRect());
}

void NotifierItem::announce(const char* change) {
    if (registered) bus.send(QDBusMessage::createSignal(itemPath, interfaceName, change));
}

QVariantMap NotifierItem::properties() const {
    QList<Pixmap> pixmaps;
    for (const QImage& image : images)
        pixmaps << pixmap(image);
    return {
        {"Category", "ApplicationStatus"},
        {"Id", "quillet"},
        {"Title", "Quillet"},
        {"Status", "Active"},
        {"WindowId", 0},
        {"IconName", ""},
        {"IconPixmap", QVariant::fromValue(pixmaps)},
        {"IconThemePath", ""},
        {"OverlayIconName", ""},
        {"AttentionIconName", ""},
        {"ToolTip", QVariant::fromValue(ToolTip{QStringLiteral("Quillet"), toolTip})},
        {"ItemIsMenu", false},
        {"Menu", QVariant::fromValue(QDBusObjectPath(menuPath))},
    };
}

void NotifierItem::activate(QPoint position) {
    const QPoint reported = Screens::fromNative(position);
    if (host.tellsPosition) {
        place = QRect(0, 0, cellSize, cellSize);
        place->moveCenter(reported);
    }
    onActivate({place, reported});
}

bool NotifierItem::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const QString member = message.member();
    const QVariantList arguments = message.arguments();
    if (member == "Get" || member == "GetAll") {
        return answerProperties(message, connection, properties());
    } else if (member == "Activate" || member == "SecondaryActivate") {
        connection.send(message.createReply());
        activate({arguments.value(0).toInt(), arguments.value(1).toInt()});
    } else if (member == "Scroll") {
        connection.send(message.createReply());
    } else {
        return false;  // ContextMenu too: hosts that draw no exported menu would get one without an
                       // anchor
    }
    return true;
}

QString NotifierItem::introspect(const QString&) const {
    return description;
}
