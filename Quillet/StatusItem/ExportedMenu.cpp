#include "StatusItem/ExportedMenu.h"

#include <QCoreApplication>
#include <QDBusMetaType>
#include <algorithm>

QDBusArgument& operator<<(QDBusArgument& out, const ExportedRow& row) {
    out.beginStructure();
    out << row.id << row.properties;
    out.endStructure();
    return out;
}

/// Each row is sent as a variant of a layout without rows.
QDBusArgument& operator<<(QDBusArgument& out, const ExportedLayout& layout) {
    out.beginStructure();
    out << layout.menu.id << layout.menu.properties;
    out.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const ExportedRow& row : layout.rows)
        out << QDBusVariant(QVariant::fromValue(ExportedLayout{row, {}}));
    out.endArray();
    out.endStructure();
    return out;
}

QDBusArgument& operator<<(QDBusArgument& out, const ExportedEvent& event) {
    out.beginStructure();
    out << event.id << event.kind << event.data << event.time;
    out.endStructure();
    return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, ExportedEvent& event) {
    in.beginStructure();
    in >> event.id >> event.kind >> event.data >> event.time;
    in.endStructure();
    return in;
}

// Qt DBus asks for readers of these too, but nobody sends them to us.
const QDBusArgument& operator>>(const QDBusArgument& in, ExportedRow&) {
    return in;
}
const QDBusArgument& operator>>(const QDBusArgument& in, ExportedLayout&) {
    return in;
}

namespace {

constexpr int rootID = 0;
constexpr int openTime = 10000;  // milliseconds; some hosts never tell that they closed the menu

ExportedRow root() {
    return {rootID, {{"children-display", "submenu"}}};
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

}  // namespace

ExportedMenu::ExportedMenu(QObject* object) : QDBusAbstractAdaptor(object) {
    qDBusRegisterMetaType<ExportedRow>();
    qDBusRegisterMetaType<QList<ExportedRow>>();
    qDBusRegisterMetaType<ExportedLayout>();
    qDBusRegisterMetaType<ExportedEvent>();
    qDBusRegisterMetaType<QList<ExportedEvent>>();
    qDBusRegisterMetaType<QList<QStringList>>();
    openTimeout.setSingleShot(true);
    openTimeout.setInterval(openTime);
    openTimeout.callOnTimeout([this] { closed(); });
}

void ExportedMenu::setItems(MenuItems items) {
    newest = std::move(items);
    isWaiting = !std::ranges::equal(rows, newest, &MenuItem::looksLike, &Row::item);
    if (!isWaiting || !openTimeout.isActive()) publish();
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
    if (std::exchange(isWaiting, false)) emit LayoutUpdated(++revision, rootID);
}

/// Opening it again while changes wait doesn't make them wait longer.
void ExportedMenu::opened() {
    if (!isWaiting) openTimeout.start();
    onOpenChange(true);
}

void ExportedMenu::closed() {
    openTimeout.stop();
    onOpenChange(false);
    if (isWaiting) publish();
}

/// The action runs from the event loop, as it may destroy this menu. A click closes the menu, so
/// one that comes before the action has run is dropped: a group may have thousands. Some hosts flip
/// the check mark themselves, so the rows are sent again even if none changed.
void ExportedMenu::chosen(int id) {
    const auto row = std::ranges::find(rows, id, &Row::id);
    if (row == rows.end() || !row->item.action || std::exchange(isChosen, true)) return;
    QMetaObject::invokeMethod(qApp, row->item.action, Qt::QueuedConnection);
    isWaiting = true;
    const auto close = [this] {
        isChosen = false;
        closed();
    };
    QMetaObject::invokeMethod(this, close, Qt::QueuedConnection);
}

uint ExportedMenu::GetLayout(int parent, int depth, const QStringList&, ExportedLayout& layout) {
    layout.menu = GetGroupProperties({parent}, {}).value(0, {parent, {}});
    if (parent == rootID && depth != 0) layout.rows = GetGroupProperties({}, {});
    return revision;
}

/// No ids stand for all rows.
QList<ExportedRow> ExportedMenu::GetGroupProperties(const QList<int>& wanted, const QStringList&) {
    QList<ExportedRow> found;
    if (wanted.contains(rootID)) found << root();
    for (const Row& row : rows)
        if (wanted.isEmpty() || wanted.contains(row.id))
            found << ExportedRow{row.id, propertiesOf(row.item)};
    return found;
}

QDBusVariant ExportedMenu::GetProperty(int id, const QString& name) {
    const ExportedRow row = GetGroupProperties({id}, {}).value(0);
    return QDBusVariant(row.properties.value(name, QString()));
}

void ExportedMenu::Event(int id, const QString& kind, const QDBusVariant&, uint) {
    if (kind == "clicked") chosen(id);
    if (kind == "opened") opened();
    if (kind == "closed" && id == rootID) closed();
}

QList<int> ExportedMenu::EventGroup(const QList<ExportedEvent>& events) {
    for (const ExportedEvent& event : events)
        Event(event.id, event.kind, event.data, event.time);
    return {};
}

bool ExportedMenu::AboutToShow(int) {
    opened();
    return false;
}

QList<int> ExportedMenu::AboutToShowGroup(const QList<int>&, QList<int>&) {
    opened();
    return {};
}
