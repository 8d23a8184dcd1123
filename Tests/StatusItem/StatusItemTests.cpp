// A session bus of the test's own, with a tray host on it that is this process, under the names of
// known hosts.
#include "StatusItem/StatusItem.h"

#include <gtest/gtest.h>
#include <qtestsupport_core.h>
#include <sys/prctl.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QWidget>

#include "StatusItem/ExportedMenu.h"

using QTest::qWaitFor;

namespace {

/// Structures and arrays as lists, variants as what they hold.
QVariant plain(const QVariant& value) {
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return plain(value.value<QDBusVariant>().variant());
    if (value.userType() != qMetaTypeId<QDBusArgument>()) return value;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() == QDBusArgument::MapType) return qdbus_cast<QVariantMap>(argument);
    QVariantList list;
    for (argument.beginStructure(); !argument.atEnd();)  // begins arrays as well
        list << plain(argument.asVariant());
    argument.endStructure();
    return list;
}

class Host : public QDBusVirtualObject {
public:
    Host() {
        daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        daemon.waitForReadyRead();
        qputenv("DBUS_SESSION_BUS_ADDRESS", daemon.readLine().trimmed());
        bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "host");
        bus.registerVirtualObject("/StatusNotifierWatcher", this);
    }

    void start(const char* process) {
        prctl(PR_SET_NAME, process);
        item.clear();
        bus.registerService(name);
        EXPECT_TRUE(qWaitFor([this] { return !item.isEmpty(); }));
        for (const char* change : {"NewIcon", "NewToolTip", "LayoutUpdated"})
            bus.connect(item, {}, {}, change, &changes[change], SLOT(start()));
    }

    QDBusMessage call(const QString& method, const QVariantList& arguments) {
        const QStringList itemMethods{"Get", "Activate", "SecondaryActivate", "Scroll"};
        const auto* const path = itemMethods.contains(method) ? "/StatusNotifierItem" : "/MenuBar";
        auto message = QDBusMessage::createMethodCall(item, path, {}, method);
        message.setArguments(arguments);
        return bus.call(message, QDBus::BlockWithGui);
    }
    QVariantList property(const char* property) {
        return plain(call("Get", {"", property}).arguments().value(0)).toList();
    }
    void click(int id) {
        call("Event", {id, "clicked", QVariant::fromValue(QDBusVariant("")), 0u});
        QApplication::processEvents();
    }
    /// The menu's rows: the id, the properties and no rows of each.
    QVariantList rows() {
        const auto layout = call("GetLayout", {0, -1, QStringList()}).arguments();
        revision = layout.value(0).toUInt();
        return plain(layout.value(1)).toList().value(2).toList();
    }

    QDBusConnection bus = QDBusConnection("");
    const QString name = "org.kde.StatusNotifierWatcher";
    QString item;
    bool answers = true, takesItems = true;
    unsigned revision = 0;  // of the rows
    /// Timers that start when the item or its menu tells of a change.
    std::map<std::string, QTimer> changes;

private:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const bool registers = message.member() == "RegisterStatusNotifierItem";
        if (registers) item = message.arguments()[0].toString();
        if (!answers) return true;
        if (registers && !takesItems) return false;
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
    }

    QProcess daemon;
};

StatusContent content(QColor color, MenuItems menu = {}) {
    const auto filled = [color](int width, double scale) {
        QImage image(QSize(width, 22) * scale, QImage::Format_ARGB32);
        image.fill(color);
        return image;
    };
    return {std::bind_front(filled, 90), std::bind_front(filled, 22), "Claude 42 %",
            std::move(menu)};
}

bool stands(const StatusItem& item, bool expected = true, int milliseconds = 20'000) {
    return qWaitFor([&] { return item.geometry().has_value() == expected; }, milliseconds);
}

TEST(StatusItem, FollowsHostsThatComeLateAndGoAndGivesEachOneShape) {
    Host host;
    std::optional<QRect> place;
    StatusItem item([&](const ItemPlace& clicked) { place = clicked.geometry; }, true);
    item.setContent(content(QColor(1, 2, 3)));
    EXPECT_FALSE(stands(item, true, 1000)) << "waits for a host";
    const QRect cell(90, 190, 22, 22);
    const std::tuple<const char*, int, std::optional<QRect>> cases[] = {
        {"panel-12-systray", 22, cell},       {"lxqt-panel", 22, cell},    {"kded6", 22, cell},
        {"notification-area-applet", 90, {}}, {"some-other-host", 22, {}}, {"waybar", 90, {}}};
    for (const auto& [process, points, expectedPlace] : cases) {
        host.bus.unregisterService(host.name);
        host.start(process);
        QVariantList icons;
        for (const int width : {points, 2 * points}) {
            const qsizetype height = 22 * qsizetype(width / points);
            const auto argb = QByteArray("\xff\1\2\3").repeated(width * height);
            icons << QVariant(QVariantList{width, int(height), argb});
        }
        EXPECT_EQ(host.property("IconPixmap"), icons) << process;
        place = QRect(1, 1, 1, 1);
        host.call("Activate", {100, 200});
        EXPECT_EQ(place, expectedPlace) << process;
    }

    auto changed = content(Qt::white);
    changed.square = [](double) { return ADD_FAILURE() << "drawn for nobody", QImage(); };
    changed.toolTip = "<img src='/dev/zero'> &\n" + std::string(2000, 'W');
    item.setContent(changed);
    const QString told = host.property("ToolTip").value(3).toString();
    EXPECT_TRUE(host.changes["NewIcon"].isActive() && host.changes["NewToolTip"].isActive());
    EXPECT_EQ(told.toStdString(), "&lt;img src='/dev/zero'&gt; &amp;\n" + std::string(1000, 'W'));

    host.bus.unregisterService(host.name);
    EXPECT_TRUE(stands(item)) << "there is no other";
    const auto* const corner = QApplication::topLevelAt(item.geometry().value().center());
    EXPECT_TRUE(corner->toolTip().contains(">" + told + "<")) << "Qt would take it for plain text";
}

TEST(StatusItem, StandsByItselfBesideAHostThatDoesNotTakeItOrNeverAnswers) {
    Host host;
    for (bool Host::*const ability : {&Host::takesItems, &Host::answers}) {
        host.*ability = false;
        host.bus.registerService(host.name);
        StatusItem item([](auto) {}, true);
        item.setContent(content(Qt::white));
        EXPECT_TRUE(stands(item));
        host.*ability = true;
        host.bus.unregisterService(host.name);
        host.start("waybar");
        EXPECT_TRUE(stands(item, false)) << "two items";
    }
}

TEST(StatusItem, ExportedMenuKeepsStillWhileOpenAndEveryClickHitsItsRow) {
    Host host;
    auto item = std::make_unique<StatusItem>([](auto) {}, true);
    std::string chosen;
    const auto choose = [&](const char* title) { return [&, title] { chosen += title; }; };
    const MenuItem heading{"Head_ing", {}, {}, {}}, first{"First", 'r', true, choose("First")},
        separator, gone{"Gone", {}, {}, [&] { item.reset(); }};
    item->setContent(content(Qt::red, {heading, first, separator, gone}));
    host.start("waybar");
    const auto rows = host.rows();
    ASSERT_EQ(rows.size(), 4);
    const auto shown = [&](int row) { return rows[row].toList()[1].toMap(); };
    const auto id = [](const QVariant& row) { return row.toList()[0].toInt(); };
    EXPECT_EQ(shown(0), (QVariantMap{{"label", "Head__ing"}, {"enabled", false}}));
    EXPECT_EQ(shown(1)["toggle-state"], 1);
    EXPECT_EQ(shown(2), (QVariantMap{{"type", "separator"}}));

    auto& newLayout = host.changes["LayoutUpdated"];
    host.call("AboutToShow", {0});
    const MenuItem added{"Added", {}, {}, choose("Added")};
    item->setContent(content(Qt::red, {added, heading, first, separator, gone}));
    host.click(id(rows[0]));  // nothing: a heading
    EXPECT_TRUE(host.rows().size() == 4 && !newLayout.isActive()) << "may be open";
    const unsigned revision = host.revision;
    host.click(id(rows[1]));
    EXPECT_TRUE(host.rows().size() == 5 && newLayout.isActive()) << "a click closes it";
    EXPECT_GT(host.revision, revision);
    host.click(id(host.rows()[0]));
    host.click(id(rows[1]));  // an id from before the change
    host.click(12345);
    const ExportedEvent click{id(rows[1]), "clicked", QDBusVariant(""), 0};
    host.call("EventGroup", {QVariant::fromValue(QList<ExportedEvent>(10'000, click))});
    QApplication::processEvents();
    EXPECT_EQ(chosen, "FirstAddedFirstFirst") << "one of all clicks on an open menu";
    host.call("AboutToShow", {0});
    item->setContent(content(Qt::red, {gone}));
    EXPECT_TRUE(qWaitFor([&] { return host.rows().size() == 1; }, 15'000)) << "closed by none";

    const QVariantList wrong[] = {{}, {1.5}, {"clicked", 1}, {1, "clicked", "", 0u}};
    for (const char* method :
         {"Activate", "SecondaryActivate", "Scroll", "GetLayout", "GetProperty",
          "GetGroupProperties", "Event", "EventGroup", "AboutToShow", "AboutToShowGroup"})
        for (const auto& arguments : wrong)
            EXPECT_EQ(host.call(method, arguments).type(), QDBusMessage::ErrorMessage) << method;
    host.click(id(rows[3]));
    EXPECT_EQ(item, nullptr) << "still there after refused calls";
}

}  // namespace
