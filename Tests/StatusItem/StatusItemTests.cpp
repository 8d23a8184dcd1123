// A session bus of the test's own, with a tray host on it that is this process, under the names of
// known hosts.
#include "StatusItem/StatusItem.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QEventLoop>
#include <QProcess>
#include <QTextDocument>
#include <QTimer>
#include <QWidget>
#include <QXmlStreamReader>

#include "StatusItem/ExportedMenu.h"

namespace {

struct Session {
    Session() {
        bus.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        bus.waitForReadyRead();
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus.readLine().trimmed());
    }
    ~Session() { bus.kill(), bus.waitForFinished(); }
    QProcess bus;
};

struct Row {
    int id = 0;
    QVariantMap properties;
};

struct Host : QDBusVirtualObject {
    Host() { bus.registerVirtualObject("/StatusNotifierWatcher", this); }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const bool registers = message.member() == "RegisterStatusNotifierItem";
        if (registers) item = message.arguments()[0].toString();
        if (!answers) return true;
        if (registers && !takesItems) return false;
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
    }
    void start(const char* process) {
        prctl(PR_SET_NAME, process);
        item.clear();
        bus.registerService("org.kde.StatusNotifierWatcher");
        for (int i = 0; i < 1000 && item.isEmpty(); ++i)
            wait(5);
    }
    static void wait(int milliseconds) {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    }
    QVariantList ask(const QString& path, const QString& interface, const QString& method,
                     const QVariantList& arguments) {
        const auto message = QDBusMessage::createMethodCall(item, path, interface, method);
        return call(message, arguments).arguments();
    }
    QDBusMessage call(QDBusMessage message, const QVariantList& arguments) {
        message.setArguments(arguments);
        QDBusPendingCallWatcher answer(bus.asyncCall(message));
        QEventLoop loop;
        QObject::connect(&answer, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
        loop.exec();
        return answer.reply();
    }
    QVariantList menu(const QString& method, const QVariantList& arguments) {
        return ask("/MenuBar", "com.canonical.dbusmenu", method, arguments);
    }
    void click(int id) {
        menu("Event", {id, "clicked", QVariant::fromValue(QDBusVariant("")), 0u}), wait(0);
    }
    static void skip(const QDBusArgument& array) { array.beginArray(), array.endArray(); }
    std::vector<Row> rows() {
        const auto layout =
            menu("GetLayout", {0, -1, QStringList()}).value(1).value<QDBusArgument>();
        Row root, row;
        std::vector<Row> rows;
        for (layout.beginStructure(), layout >> root.id >> root.properties, layout.beginArray();
             !layout.atEnd();) {
            QDBusVariant child;
            layout >> child;
            const auto fields = child.variant().value<QDBusArgument>();
            fields.beginStructure(), fields >> row.id >> row.properties, skip(fields),
                fields.endStructure();
            rows.push_back(row);
        }
        layout.endArray(), layout.endStructure();
        return rows;
    }
    QDBusArgument property(const char* name) {
        const auto got =
            ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get", {"", name});
        return got.value(0).value<QDBusVariant>().variant().value<QDBusArgument>();
    }
    QString toolTip() {
        const auto fields = property("ToolTip");
        QString icon, title, text;
        fields.beginStructure(), fields >> icon, skip(fields), fields >> title >> text,
            fields.endStructure();
        return text;
    }
    /// Each picture's width and first pixel.
    std::vector<std::pair<int, QByteArray>> pictures() {
        const auto list = property("IconPixmap");
        std::vector<std::pair<int, QByteArray>> pictures;
        for (list.beginArray(); !list.atEnd(); list.endStructure()) {
            int width = 0, height = 0;
            QByteArray pixels;
            list.beginStructure(), list >> width >> height >> pixels;
            pictures.emplace_back(width, pixels.left(4));
        }
        list.endArray();
        return pictures;
    }
    QDBusConnection bus =
        QDBusConnection::connectToBus(qgetenv("DBUS_SESSION_BUS_ADDRESS"), "host");
    QString item;
    bool answers = true;
    bool takesItems = true;
};

StatusContent content(QColor color, MenuItems menu = {}) {
    const auto filled = [color](int width) {
        return [color, width](double scale) {
            QImage image(static_cast<int>(width * scale), static_cast<int>(22 * scale),
                         QImage::Format_ARGB32);
            image.fill(color);
            return image;
        };
    };
    return {filled(90), filled(22), "Claude 42 %", std::move(menu)};
}

TEST(StatusItem, FollowsHostsThatComeLateAndGoAndGivesEachOneShape) {
    const Session session;
    std::optional<QRect> place;
    StatusItem item([&](const ItemPlace& clicked) { place = clicked.geometry; }, true);
    item.setContent(content(QColor(1, 2, 3)));
    Host host;
    using Pictures = std::vector<std::pair<int, QByteArray>>;
    const QByteArray pixel("\xff\1\2\3");
    const Pictures wide{{90, pixel}, {180, pixel}}, square{{22, pixel}, {44, pixel}};
    const struct {
        const char* process;
        Pictures pictures;
        std::optional<QPoint> clicked;
    } cases[] = {{"panel-12-systray", square, QPoint(100, 200)},
                 {"notification-area-applet", wide, {}},
                 {"waybar", wide, {}},
                 {"lxqt-panel", square, QPoint(100, 200)},
                 {"kded6", square, QPoint(100, 200)},
                 {"some-other-host", square, {}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.process);
        host.start(c.process);
        EXPECT_EQ(host.pictures(), c.pictures);
        place = QRect(1, 1, 1, 1);
        host.ask("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate", {100, 200});
        EXPECT_EQ(place ? std::optional(place->center()) : std::nullopt,
                  c.clicked ? std::optional(*c.clicked) : std::nullopt);
        host.bus.unregisterService("org.kde.StatusNotifierWatcher");
    }
    host.start("waybar");
    QTimer newIcon, newToolTip;
    const auto watch = [&host](const char* change, QTimer& announced) {
        host.bus.connect(host.item, "/StatusNotifierItem", "org.kde.StatusNotifierItem", change,
                         &announced, SLOT(start()));
    };
    watch("NewIcon", newIcon);
    watch("NewToolTip", newToolTip);
    item.setContent(content(QColor(1, 2, 3)));
    host.pictures();
    EXPECT_FALSE(newIcon.isActive() || newToolTip.isActive()) << "the same as before";
    auto changed = content(Qt::white);
    changed.square = [](double) { return ADD_FAILURE() << "drawn for nobody", QImage(); };
    changed.toolTip = "Claude <img src=\"/dev/zero\"> & 43 %";
    item.setContent(changed);
    EXPECT_EQ(host.pictures()[0].second, "\xff\xff\xff\xff");
    EXPECT_TRUE(newIcon.isActive() && newToolTip.isActive());
    EXPECT_EQ(host.toolTip(), "Claude &lt;img src=&quot;/dev/zero&quot;&gt; &amp; 43 %");
}

TEST(StatusItem, StandsByItselfBesideAHostThatDoesNotTakeItOrNeverAnswers) {
    const Session session;
    for (bool Host::*const ability : {&Host::takesItems, &Host::answers}) {
        Host host;
        host.*ability = false;
        host.bus.registerService("org.kde.StatusNotifierWatcher");
        StatusItem item([](auto) {}, true);
        item.setContent(content(Qt::white));
        Host::wait(5300);
        EXPECT_TRUE(item.geometry()) << "for all that can be seen, it has no place in the tray";
        host.*ability = true;
        host.bus.unregisterService("org.kde.StatusNotifierWatcher");
        host.start("waybar");
        Host::wait(100);
        EXPECT_FALSE(item.geometry()) << "two items";
    }
}

TEST(StatusItem, StandsByItselfWithoutASessionBus) {
    StatusItem item([](auto) {}, true);
    auto shown = content(Qt::white);
    {
        StatusItem switchedOn([](auto) {}, false);
        switchedOn.setContent(shown);
        Host::wait(200);
        EXPECT_TRUE(switchedOn.geometry());
        EXPECT_FALSE(item.geometry());
    }
    shown.toolTip = "Claude: <b>\n  <img src='/dev/zero'> & " + std::string(2000, 'W') + "\n";
    item.setContent(shown);
    Host::wait(3500);  // it waits three seconds for a tray
    EXPECT_TRUE(item.geometry());

    QString markup;
    for (const QWidget* const window : QApplication::topLevelWidgets())
        markup += window->toolTip();
    EXPECT_TRUE(Qt::mightBeRichText(markup));
    QTextDocument toolTip;
    toolTip.setHtml(markup);
    const std::string fitting = shown.toolTip.substr(0, shown.toolTip.find('\n') + 1 + 1000);
    EXPECT_EQ(toolTip.toPlainText().toStdString(), fitting + "\n")
        << "as it stands, up to what fits";
}

TEST(StatusItem, ExportedMenuKeepsStillWhileOpenAndEveryClickHitsItsRow) {
    const Session session;
    Host host;
    auto item = std::make_unique<StatusItem>([](auto) {}, true);
    std::string chosen;
    const auto choose = [&](const char* title) { return [&, title] { chosen += title; }; };
    const MenuItem heading{"Head_ing", {}, {}, {}}, first{"First", 'r', true, choose("First")},
        separator, gone{"Gone", {}, {}, [&] { item.reset(); }};
    item->setContent(content(Qt::red, {heading, first, separator, gone}));
    host.start("waybar");
    const auto rows = host.rows();
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0].properties["label"], "Head__ing") << "no mnemonic";
    EXPECT_EQ(rows[0].properties["enabled"], false);
    EXPECT_EQ(rows[1].properties["toggle-state"], 1);
    EXPECT_EQ(rows[2].properties["type"], "separator");

    host.menu("AboutToShow", {0});
    const MenuItem added{"Added", {}, {}, choose("Added")};
    item->setContent(content(Qt::red, {added, heading, first, separator, gone}));
    EXPECT_EQ(host.rows().size(), 4u) << "may be open";
    host.click(rows[0].id);  // nothing: a heading
    EXPECT_EQ(host.rows().size(), 4u);
    host.click(rows[1].id);
    EXPECT_EQ(host.rows().size(), 5u) << "a click closes it";
    host.click(host.rows()[0].id);
    host.click(rows[1].id);  // an id from before the change
    host.click(12345);
    const ExportedEvent click{rows[1].id, "clicked", QDBusVariant(""), 0};
    host.menu("EventGroup", {QVariant::fromValue(QList<ExportedEvent>(10'000, click))});
    host.rows();
    EXPECT_EQ(chosen, "FirstAddedFirstFirst") << "one of all clicks on an open menu";
    host.click(rows[3].id);
    EXPECT_EQ(item, nullptr);
}

TEST(StatusItem, RefusesCallsOfAnotherSignatureThanItsOwn) {
    const Session session;
    Host host;
    StatusItem item([](auto) { FAIL() << "activated"; }, true);
    item.setContent(content(Qt::red, {{"First", {}, {}, [] { FAIL() << "chosen"; }}}));
    host.start("waybar");
    qDBusRegisterMetaType<QList<QList<int>>>();
    const auto listOf = [](int id) { return QVariant::fromValue(QList<int>{id}); };
    const QVariant lists = QVariant::fromValue(QList<QList<int>>{{1}});
    const std::pair<QString, QVariantList> calls[] = {
        {"", {}},
        {"i", {1}},
        {"s", {"clicked"}},
        {"is", {1, "clicked"}},
        {"ai", {listOf(1)}},
        {"ais", {listOf(1), "First"}},
        {"aaias", {lists, QStringList()}},
        {"aai", {lists}},
        {"dd", {1.5, 1.5}},
        {"issu", {1, "clicked", "", 0u}},
        {"v", {QVariant::fromValue(QDBusVariant(1))}},
        {"a{sv}", {QVariantMap{{"id", 1}}}},
    };
    int refused = 0;
    for (const QString path : {"/StatusNotifierItem", "/MenuBar"}) {
        QXmlStreamReader xml(host.ask(path, "org.freedesktop.DBus.Introspectable", "Introspect", {})
                                 .value(0)
                                 .toString());
        QString interface, method, own;
        while (!xml.atEnd()) {
            xml.readNext();
            const auto name = xml.attributes().value("name").toString();
            if (xml.isStartElement() && xml.name() == u"interface") interface = name;
            if (interface.startsWith("org.freedesktop")) continue;
            if (xml.isStartElement() && xml.name() == u"method") method = name, own.clear();
            const bool isIn = xml.attributes().value("direction") == u"in";
            if (xml.isStartElement() && isIn) own += xml.attributes().value("type");
            if (!xml.isEndElement() || xml.name() != u"method") continue;
            for (const auto& [signature, arguments] : calls) {
                const auto reply = host.call(
                    QDBusMessage::createMethodCall(host.item, path, interface, method), arguments);
                const bool isRefused = reply.type() == QDBusMessage::ErrorMessage;
                EXPECT_EQ(isRefused, signature != own)
                    << method.toStdString() << " " << signature.toStdString();
                refused += isRefused;
            }
        }
    }
    EXPECT_GT(refused, 100) << "the methods of both objects";
    EXPECT_EQ(host.rows().size(), 1u) << "still there";
}

}  // namespace
