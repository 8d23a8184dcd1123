#include "StatusItem/ExportedMenu.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <algorithm>

#include "StatusItem/BusProperties.h"

namespace {

const QString interfaceName = QStringLiteral("com.canonical.dbusmenu");
constexpr int rootID = 0;
constexpr int openTime = 10000;  // milliseconds; some hosts never tell that they closed the menu

const char* const description = R"xml(<interface name="com.canonical.dbusmenu">
<property name="Version" type="u" access="read"/>
<property name="TextDirection" type="s" access="read"/>
<property name="Status" type="s" access="read"/>
<property name="IconThemePath" type="as" access="read"/>
<method name="GetLayout"><arg type="i" direction="in"/><arg type="i" direction="in"/><arg type="as" direction="in"/>
<arg type="u" direction="out"/><arg type="(ia{sv}av)" direction="out"/></method>
<method name="GetGroupProperties"><arg type="ai" direction="in"/><arg type="as" direction="in"/>
<arg type="a(ia{sv})" direction="out"/></method>
<method name="GetProperty"><arg type="i" direction="in"/><arg type="s" direction="in"/>
<arg type="v" direction="out"/></method>
<method name="Event"><arg type="i" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="in"/>
<arg type="u" direction="in"/></method>
<method name="EventGroup"><arg type="a(isvu)" direction="in"/><arg type="ai" direction="out"/></method>
<method name="AboutToShow"><arg type="i" direction="in"/><arg type="b" direction="out"/></method>
<method name="AboutToShowGroup"><arg type="ai" direction="in"/><arg type="ai" direction="out"/>
<arg type="ai" direction="out"/></method>
<signal name="LayoutUpdated"><arg type="u"/><arg type="i"/></signal>
</interface>)xml";

struct Layout {
    int id = rootID;
    QVariantMap properties;
    QList<QVariant> children;
};

struct Properties {
    int id = rootID;
    QVariantMap values;
};

struct Event {
    int id = rootID;
    QString kind;
    QDBusVariant data;
    uint time = 0;
};

QDBusArgument& operator<<(QDBusArgument& out, const Layout& layout) {
    out.beginStructure();
    out << layout.id << layout.properties;
    out.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const QVariant& child : layout.children)
        out << QDBusVariant(child);
    out.endArray();
    out.endStructure();
    return out;
}

QDBusArgument& operator<<(QDBusArgument& out, const Properties& properties) {
    out.beginStructure();
    out << properties.id << properties.values;
    out.endStructure();
    return out;
}

QDBusArgument& operator<<(QDBusArgument& out, const Event& event) {
    out.beginStructure();
    out << event.id << event.kind << event.data << event.time;
    out.endStructure();
    return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, Event& event) {
    in.beginStructure();
    in >> event.id >> event.kind >> event.data >> event.time;
    in.endStructure();
    return in;
}

// Only ever sent.
const QDBusArgument& operator>>(const QDBusArgument& in, Layout&) {
    return in;
}
const QDBusArgument& operator>>(const QDBusArgument& in, Properties&) {
    return in;
}

void registerTypes() {
    qDBusRegisterMetaType<Layout>();
    qDBusRegisterMetaType<Properties>();
    qDBusRegisterMetaType<QList<Properties>>();
    qDBusRegisterMetaType<Event>();
    qDBusRegisterMetaType<QList<Event>>();
    qDBusRegisterMetaType<QList<QStringList>>();
    qDBusRegisterMetaType<QList<int>>();
}

/// Of the menu itself.
QVariantMap rootProperties() {
    return {{"children-display", "submenu"}};
}

QVariantMap propertiesOf(const MenuItem& item) {
    if (item.isSeparator()) return {{"type", "separator"}};
    QVariantMap properties{
        {"label", QString::fromStdString(item.title).replace(u'_', "__")},
        {"enabled", item.action != nullptr},
    };
    if (item.checked) {
        properties["toggle-type"] = "checkmark";
        properties["toggle-state"] = *item.checked ? 1 : 0;
    }
    if (item.keyEquivalent) {
        const QList<QStringList> keys{{"Control", QString(QLatin1Char(*item.keyEquivalent))}};
        properties["shortcut"] = QVariant::fromValue(keys);
    }
    return properties;
}

bool lookAlike(const MenuItems& some, const MenuItems& others) {
    return std::ranges::equal(some, others,
                              [](const auto& a, const auto& b) { return a.looksLike(b); });
}

}  // namespace

ExportedMenu::ExportedMenu(const QDBusConnection& connection, const QString& objectPath)
    : bus(connection), path(objectPath) {
    registerTypes();
    mayBeOpen.setSingleShot(true);
    mayBeOpen.setInterval(openTime);
    mayBeOpen.callOnTimeout([this] { closed(); });
    bus.registerVirtualObject(path, this);
}

ExportedMenu::~ExportedMenu() {
    bus.unregisterObject(path);
}

void ExportedMenu::setItems(MenuItems items) {
    MenuItems known;
    for (const Row& row : rows)
        known.push_back(row.item);
    newest = std::move(items);
    waiting = !lookAlike(known, newest);
    if (!waiting || !mayBeOpen.isActive()) publish();
}

/// The host is told only of what it can see; actions may be new each time.
void ExportedMenu::publish() {
    rows.clear();
    std::map<std::string, int> occurrences;
    for (const MenuItem& item : newest) {
        const int next = static_cast<int>(ids.size()) + 1;
        const auto id =
            ids.try_emplace({item.title, occurrences[item.title]++}, next).first->second;
        rows.push_back({id, item});
    }
    if (!std::exchange(waiting, false)) return;
    bus.send(QDBusMessage::createSignal(path, interfaceName, "LayoutUpdated")
             << ++revision << rootID);
}

const ExportedMenu::Row* ExportedMenu::find(int id) const {
    const auto row = std::ranges::find(rows, id, &Row::id);
    return row == rows.end() ? nullptr : &*row;
}

/// Opening it again while changes wait doesn't make them wait longer.
void ExportedMenu::opened() {
    if (!waiting) mayBeOpen.start();
    if (onOpenChange) onOpenChange(true);
}

void ExportedMenu::closed() {
    mayBeOpen.stop();
    if (onOpenChange) onOpenChange(false);
    if (waiting) publish();
}

/// The action runs from the event loop: it may take the status item away, and this menu with it. A
/// click closes the menu, and some hosts flip its check mark by themselves, so the rows are sent
/// again even if the action changed none.
void ExportedMenu::chosen(int id) {
    const Row* row = find(id);
    if (!row || !row->item.action) return;
    QMetaObject::invokeMethod(qApp, row->item.action, Qt::QueuedConnection);
    waiting = true;
    QMetaObject::invokeMethod(
        this, [this] { closed(); }, Qt::QueuedConnection);
}

void ExportedMenu::handleEvent(int id, const QString& kind) {
    if (kind == "clicked") chosen(id);
    if (kind == "opened") opened();
    if (kind == "closed" && id == rootID) closed();
}

QVariantList ExportedMenu::getLayout(const QVariantList& arguments) {
    const int parent = arguments.value(0).toInt(), depth = arguments.value(1).toInt();
    Layout layout{parent, {}, {}};
    if (const Row* row = find(parent)) layout.properties = propertiesOf(row->item);
    if (parent == rootID) {
        layout.properties = rootProperties();
        for (const Row& row : rows)
            layout.children << QVariant::fromValue(Layout{row.id, propertiesOf(row.item), {}});
    }
    if (depth == 0) layout.children.clear();
    return {revision, QVariant::fromValue(layout)};
}

/// No identifiers stand for all.
QVariantList ExportedMenu::getGroupProperties(const QVariantList& arguments) {
    const auto wanted = qdbus_cast<QList<int>>(arguments.value(0));
    QList<Properties> found;
    if (wanted.contains(rootID)) found << Properties{rootID, rootProperties()};
    for (const Row& row : rows) {
        if (wanted.isEmpty() || wanted.contains(row.id))
            found << Properties{row.id, propertiesOf(row.item)};
    }
    return {QVariant::fromValue(found)};
}

QVariantList ExportedMenu::getProperty(const QVariantList& arguments) {
    const Row* row = find(arguments.value(0).toInt());
    const QVariantMap properties = row ? propertiesOf(row->item) : rootProperties();
    const QVariant value = properties.value(arguments.value(1).toString(), QString());
    return {QVariant::fromValue(QDBusVariant(value))};
}

QVariantList ExportedMenu::aboutToShow(const QVariantList&) {
    opened();
    return {false};
}

QVariantList ExportedMenu::aboutToShowGroup(const QVariantList&) {
    opened();
    return {QVariant::fromValue(QList<int>()), QVariant::fromValue(QList<int>())};
}

QVariantList ExportedMenu::event(const QVariantList& arguments) {
    handleEvent(arguments.value(0).toInt(), arguments.value(1).toString());
    return {};
}

QVariantList ExportedMenu::eventGroup(const QVariantList& arguments) {
    for (const Event& event : qdbus_cast<QList<Event>>(arguments.value(0)))
        handleEvent(event.id, event.kind);
    return {QVariant::fromValue(QList<int>())};
}

bool ExportedMenu::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    static const std::map<QString, Handler> handlers{
        {"GetLayout", &ExportedMenu::getLayout},
        {"GetGroupProperties", &ExportedMenu::getGroupProperties},
        {"GetProperty", &ExportedMenu::getProperty},
        {"AboutToShow", &ExportedMenu::aboutToShow},
        {"AboutToShowGroup", &ExportedMenu::aboutToShowGroup},
        {"Event", &ExportedMenu::event},
        {"EventGroup", &ExportedMenu::eventGroup},
    };
    const QVariantMap properties{{"Version", 3u},
                                 {"TextDirection", "ltr"},
                                 {"Status", "normal"},
                                 {"IconThemePath", QStringList()}};
    const auto handler = handlers.find(message.member());
    if (handler == handlers.end()) return answerProperties(message, connection, properties);
    return connection.send(message.createReply((this->*handler->second)(message.arguments())));
}

QString ExportedMenu::introspect(const QString&) const {
    return description;
}
