// A session bus of the test's own, with a tray host on it that is this process, under the names of
// known hosts.
#include "StatusItem/StatusItem.h"

#include <gtest/gtest.h>
#include <qtestsupport_core.h>
#include <sys/prctl.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDebug>
#include <QProcess>
#include <QWidget>

#include "StatusItem/ExportedMenu.h"

using QTest::qWaitFor;

namespace {

class Host : public QDBusVirtualObject {
public:
    Host() {
        daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        daemon.waitForReadyRead();
        qputenv("DBUS_SESSION_BUS_ADDRESS", daemon.readLine().trimmed());
        bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "host");
        bus.registerVirtualObject("/StatusNotifierWatcher", this);
    }

    ~Host() override {
        daemon.terminate();  // it then removes its socket
        daemon.waitForFinished();
    }

    void start(const char* process) {
        prctl(PR_SET_NAME, process);
        item.clear();
        bus.registerService(name);
        EXPECT_TRUE(qWaitFor([this] { return !item.isEmpty(); }));
    }

    QDBusMessage call(const char* path, const char* method, const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(item, path, {}, method);
        message.setArguments(arguments);
        return bus.call(message, QDBus::BlockWithGui);
    }
    /// The item's property as Qt writes it for people.
    QString property(const char* property) {
        QString text;
        QDebug(&text) << call("/StatusNotifierItem", "Get", {"", property});
        return text;
    }

    QDBusConnection bus = QDBusConnection("");
    const QString name = "org.kde.StatusNotifierWatcher";
    QString item;
    bool answers = true, takesItems = true, hasHost = true;

private:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const bool registers = message.member() == "RegisterStatusNotifierItem";
        if (registers) item = message.arguments()[0].toString();
        if (!answers) return true;
        if (registers && !takesItems) return false;
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost))));
    }

    QProcess daemon;
};

StatusContent content(QColor color, const std::string& toolTip = "Claude 42 %") {
    const auto filled = [color](int width, double scale) {
        QImage image(QSize(width, 22) * scale, QImage::Format_ARGB32);
        image.fill(color);
        return image;
    };
    return {std::bind_front(filled, 90), std::bind_front(filled, 22), toolTip, {}};
}

bool stands(const StatusItem& item, bool expected = true, int milliseconds = 20'000) {
    return qWaitFor([&] { return item.geometry().has_value() == expected; }, milliseconds);
}

TEST(StatusItem, FollowsHostsThatComeLateAndGoAndGivesEachOneShape) {
    Host host;
    std::optional<QRect> place;
    StatusItem item([&](const ItemPlace& clicked) { place = clicked.geometry; }, true);
    item.setContent(content(QColor(2, 3, 4, 1)));
    EXPECT_FALSE(stands(item, true, 1000)) << "waits for a host";
    const QRect cell(90, 190, 22, 22);
    const std::tuple<const char*, int, std::optional<QRect>> cases[] = {
        {"panel-12-systray", 22, cell},       {"lxqt-panel", 22, cell},    {"kded6", 22, cell},
        {"notification-area-applet", 90, {}}, {"some-other-host", 22, {}}, {"waybar", 90, {}}};
    for (const auto& [process, points, expectedPlace] : cases) {
        host.bus.unregisterService(host.name);
        const QString old = host.item;
        host.start(process);
        EXPECT_FALSE(host.bus.interface()->isServiceRegistered(old)) << "the item stays";
        const QString icons = host.property("IconPixmap");
        const QString icon = "(iiay) %1, %2, {1, 2, 3, 4, ";
        for (const int scale : {1, 2})
            EXPECT_TRUE(icons.contains(icon.arg(points * scale).arg(22 * scale))) << process;
        place = QRect(1, 1, 1, 1);
        host.call("/StatusNotifierItem", "Activate", {100, 200});
        EXPECT_EQ(place, expectedPlace) << process;
    }

    const QVariantList wrong[] = {{}, {1.5}, {"clicked", 1}, {1, "clicked", "", 0u}};
    for (const char* path : {"/StatusNotifierItem", "/MenuBar"})
        for (const char* method :
             {"Activate", "SecondaryActivate", "Scroll", "GetLayout", "GetProperty",
              "GetGroupProperties", "Event", "EventGroup", "AboutToShow", "AboutToShowGroup"})
            for (const auto& values : wrong)
                EXPECT_TRUE(host.call(path, method, values).errorName().contains("UnknownMethod"));

    std::map<std::string, QTimer> changes;  // start when the item tells of them
    for (const char* change : {"NewIcon", "NewToolTip"})
        host.bus.connect(host.item, {}, {}, change, &changes[change], SLOT(start()));
    item.setContent(content(Qt::white, "<img src='/dev/zero'> &\n" + std::string(2000, 'W')));
    EXPECT_TRUE(host.property("ToolTip").contains(", \"&lt;img src='/dev/zero'&gt; &amp;\n" +
                                                  QString(1000, 'W') + "\"]"));
    EXPECT_TRUE(changes["NewIcon"].isActive() && changes["NewToolTip"].isActive());

    host.bus.unregisterService(host.name);
    EXPECT_TRUE(stands(item)) << "there is no other";
    const auto* const corner = QApplication::topLevelAt(item.geometry().value().center());
    EXPECT_TRUE(corner->toolTip().contains(">&lt;img")) << "Qt would take it for plain text";
}

TEST(StatusItem, StandsByItselfBesideAHostThatDoesNotTakeItOrNeverAnswers) {
    Host host;
    for (bool Host::*const ability : {&Host::hasHost, &Host::takesItems, &Host::answers}) {
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

TEST(ExportedMenu, KeepsStillWhileOpenAndEveryClickHitsItsRow) {
    std::optional<QObject> object(std::in_place);
    auto* const menu = new ExportedMenu(&*object);
    menu->onOpenChange = [](bool) {};
    unsigned revision = 0;  // that the host was told of
    QObject::connect(menu, &ExportedMenu::LayoutUpdated, [&](uint told) { revision = told; });
    const auto rows = [menu] { return menu->GetGroupProperties({}, {}); };
    const auto click = [menu](const ExportedRow& row, int times = 1) {
        menu->EventGroup(QList<ExportedEvent>(times, {row.id, "clicked", {}, 0}));
        QApplication::processEvents();
    };
    std::string chosen;
    const MenuItem heading{"Head_ing", {}, {}, {}}, separator,
        first{"First", 'r', true, [&] { chosen += "First"; }},
        added{"Added", {}, {}, [&] { chosen += "Added"; }},
        gone{"Gone", {}, {}, [&] { object.reset(); }};
    menu->setItems({heading, first, separator, gone});
    const auto old = rows();
    EXPECT_EQ(old.value(0).properties, (QVariantMap{{"label", "Head__ing"}, {"enabled", false}}));
    EXPECT_EQ(old.value(1).properties["toggle-state"], 1);
    EXPECT_EQ(old.value(2).properties, (QVariantMap{{"type", "separator"}}));

    menu->AboutToShow(0);
    menu->setItems({added, heading, first, separator, gone});
    EXPECT_TRUE(rows().size() == 4 && revision == 1) << "may be open";
    click(old[1]);
    EXPECT_TRUE(rows().size() == 5 && revision == 2) << "a click closes it";
    click(rows()[0]);
    click({12345, {}});
    click(old[1], 10'000);  // an id from before the change
    EXPECT_EQ(chosen, "FirstAddedFirst") << "one of all clicks on an open menu";
    menu->Event(0, "opened", QDBusVariant(), 0);
    menu->setItems({gone, gone});
    EXPECT_EQ(rows().size(), 5);
    menu->Event(0, "closed", QDBusVariant(), 0);
    EXPECT_EQ(rows().size(), 2);
    menu->AboutToShow(0);
    menu->setItems({gone});
    EXPECT_TRUE(qWaitFor([&] { return rows().size() == 1; }, 15'000)) << "closed by none";
    click(old[3]);
    EXPECT_FALSE(object);
}

}  // namespace
