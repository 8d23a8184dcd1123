#include "StatusItem/NotifierItem.h"

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QtEndian>

#include "Windowing/FloatingWindow.h"
#include "Windowing/Screens.h"
#include "Windowing/WindowSystem.h"

struct NotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;  ///< ARGB, most significant byte first.
};

struct NotifierToolTip {
    QString iconName;
    QList<NotifierPixmap> icon;
    QString title;
    QString markup;
};

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
const QString menuPath = QStringLiteral("/MenuBar");
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

/// The item as the host sees it. It has no ContextMenu: a host that draws no exported menu would
/// get one without a place.
class NotifierAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category MEMBER category CONSTANT)
    Q_PROPERTY(QString Id MEMBER id CONSTANT)
    Q_PROPERTY(QString Title MEMBER title CONSTANT)
    Q_PROPERTY(QString Status MEMBER status CONSTANT)
    Q_PROPERTY(int WindowId MEMBER windowID CONSTANT)
    Q_PROPERTY(QString IconName MEMBER none CONSTANT)
    Q_PROPERTY(QString IconThemePath MEMBER none CONSTANT)
    Q_PROPERTY(QString OverlayIconName MEMBER none CONSTANT)
    Q_PROPERTY(QString AttentionIconName MEMBER none CONSTANT)
    Q_PROPERTY(QList<NotifierPixmap> IconPixmap READ iconPixmap)
    Q_PROPERTY(NotifierToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu MEMBER isMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu MEMBER menu CONSTANT)

public:
    explicit NotifierAdaptor(NotifierItem* shown) : QDBusAbstractAdaptor(shown), item(shown) {}

    void show(const std::vector<QImage>& newImages, const QString& newMarkup) {
        if (std::exchange(images, newImages) != newImages) emit NewIcon();
        if (std::exchange(markup, newMarkup) != newMarkup) emit NewToolTip();
    }

public slots:
    void Activate(int x, int y) { item->activate({x, y}); }
    void SecondaryActivate(int x, int y) { item->activate({x, y}); }
    void Scroll(int, const QString&) {}

signals:
    void NewIcon();
    void NewToolTip();

private:
    QList<NotifierPixmap> iconPixmap() const {
        QList<NotifierPixmap> pixmaps;
        for (const QImage& image : images)
            pixmaps << pixmap(image);
        return pixmaps;
    }
    NotifierToolTip toolTip() const { return {none, {}, title, markup}; }

    NotifierItem* const item;
    std::vector<QImage> images;
    QString markup;
    const QString category = QStringLiteral("ApplicationStatus"), status = QStringLiteral("Active");
    const QString id = QStringLiteral("quillet"), title = QStringLiteral("Quillet"), none;
    const int windowID = 0;
    const bool isMenu = false;
    const QDBusObjectPath menu{menuPath};
};

NotifierItem::NotifierItem(const QDBusConnection& connection, NotifierHost::Host shownBy,
                           std::function<void()> registration, Activate activation)
    : bus(connection),
      host(shownBy),
      onRegistered(std::move(registration)),
      onActivate(std::move(activation)),
      service(uniqueService()),
      adaptor(new NotifierAdaptor(this)),
      menu(new ExportedMenu(&menuObject)) {
    menu->onOpenChange = [this](bool open) { hideBars(open); };
    qDBusRegisterMetaType<NotifierPixmap>();
    qDBusRegisterMetaType<QList<NotifierPixmap>>();
    qDBusRegisterMetaType<NotifierToolTip>();
    bus.registerObject(itemPath, this);
    bus.registerObject(menuPath, &menuObject);
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

#include "NotifierItem.moc"
