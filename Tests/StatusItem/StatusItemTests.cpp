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
#include <QTextDocument>
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
    const bool isArray = argument.currentType() == QDBusArgument::ArrayType;
    QVariantList list;
    for (isArray ? argument.beginArray() : argument.beginStructure(); !argument.atEnd();)
        list << plain(argument.asVariant());
    return list;
}

class Host : public QDBusVirtualObject {
public:
    Host() {
        daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        daemon.waitForReadyRead();
        const QByteArray address = daemon.readLine().trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        bus = QDBusConnection::connectToBus(address, "host");
        bus.registerVirtualObject("/StatusNotifierWatcher", this);
    }
    ~Host() override {
        daemon.kill();
        daemon.waitForFinished();
    }

    void start(const char* process) {
        prctl(PR_SET_NAME, process);
        item.clear();
        bus.registerService(name);
        EXPECT_TRUE(qWaitFor([this] { return !item.isEmpty(); }));
    }
    void stop() { bus.unregisterService(name); }

    QDBusMessage call(const QString& path, const QString& method, const QVariantList& arguments) {
        const char* const interface = path == "/MenuBar" ? "com.canonical.dbusmenu"
                                      : method == "Get"  ? "org.freedesktop.DBus.Properties"
                                                         : "org.kde.StatusNotifierItem";
        auto message = QDBusMessage::createMethodCall(item, path, interface, method);
        message.setArguments(arguments);
        return bus.call(message, QDBus::BlockWithGui);
    }
    QVariantList property(const char* property) {
        const auto got = call("/StatusNotifierItem", "Get", {"", property}).arguments();
        return plain(got.value(0)).toList();
    }
    QVariantList menu(const char* method, const QVariantList& arguments) {
        return call("/MenuBar", method, arguments).arguments();
    }
    void click(int id) {
        menu("Event", {id, "clicked", QVariant::fromValue(QDBusVariant("")), 0u});
        QApplication::processEvents();
    }
    std::vector<std::pair<int, QVariantMap>> rows() {
        const auto layout = plain(menu("GetLayout", {0, -1, QStringList()}).value(1)).toList();
        std::vector<std::pair<int, QVariantMap>> rows;
        for (const QVariant& row : layout.value(2).toList())
            rows.emplace_back(row.toList().value(0).toInt(), row.toList().value(1).toMap());
        return rows;
    }

    QDBusConnection bus = QDBusConnection("");
    const QString name = "org.kde.StatusNotifierWatcher";
    QString item;
    bool answers = true;
    bool takesItems = true;

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
    const auto filled = [color](int width) {
        return [color, width](double scale) {
            QImage image(QSize(width, 22) * scale, QImage::Format_ARGB32);
            image.fill(color);
            return image;
        };
    };
    return {filled(90), filled(22), "Claude 42 %", std::move(menu)};
}

TEST(StatusItem, FollowsHostsThatComeLateAndGoAndGivesEachOneShape) {
    Host host;
    std::optional<QRect> place;
    StatusItem item([&](const ItemPlace& clicked) { place = clicked.geometry; }, true);
    item.setContent(content(QColor(1, 2, 3)));
    const struct {
        const char* process;
        int width;
        std::optional<QRect> place;
    } cases[] = {{"panel-12-systray", 22, QRect(90, 190, 22, 22)},
                 {"notification-area-applet", 90, {}},
                 {"lxqt-panel", 22, QRect(90, 190, 22, 22)},
                 {"kded6", 22, QRect(90, 190, 22, 22)},
                 {"some-other-host", 22, {}},
                 {"waybar", 90, {}}};
    for (const auto& c : cases) {
        host.stop();
        host.start(c.process);
        QVariantList expected;
        for (const int scale : {1, 2}) {
            const int width = c.width * scale, height = 22 * scale;
            const auto pixels = QByteArray("\xff\1\2\3").repeated(width * height);
            expected << QVariant(QVariantList{width, height, pixels});
        }
        EXPECT_TRUE(host.property("IconPixmap") == expected) << c.process;
        place = QRect(1, 1, 1, 1);
        host.call("/StatusNotifierItem", "Activate", {100, 200});
        EXPECT_EQ(place, c.place) << c.process;
    }
    QTimer newIcon, newToolTip;
    const auto listen = [&host](const char* change, QTimer& heard) {
        host.bus.connect(host.item, "/StatusNotifierItem", "org.kde.StatusNotifierItem", change,
                         &heard, SLOT(start()));
    };
    listen("NewIcon", newIcon);
    listen("NewToolTip", newToolTip);
    item.setContent(content(QColor(1, 2, 3)));
    host.property("IconPixmap");
    EXPECT_FALSE(newIcon.isActive() || newToolTip.isActive()) << "the same as before";
    auto changed = content(Qt::white);
    changed.square = [](double) { return ADD_FAILURE() << "drawn for nobody", QImage(); };
    changed.toolTip = "Claude <img src=\"/dev/zero\"> & 43 %";
    item.setContent(changed);
    EXPECT_EQ(host.property("ToolTip").value(3).toString(),
              "Claude &lt;img src=&quot;/dev/zero&quot;&gt; &amp; 43 %");
    EXPECT_TRUE(newIcon.isActive() && newToolTip.isActive());
}

bool stands(const StatusItem& item, int milliseconds) {
    return qWaitFor([&item] { return item.geometry().has_value(); }, milliseconds);
}

TEST(StatusItem, StandsByItselfBesideAHostThatDoesNotTakeItOrNeverAnswers) {
    Host host;
    for (bool Host::*const ability : {&Host::takesItems, &Host::answers}) {
        host.*ability = false;
        host.bus.registerService(host.name);
        StatusItem item([](auto) {}, true);
        item.setContent(content(Qt::white));
        EXPECT_TRUE(stands(item, 6000));
        host.*ability = true;
        host.stop();
        host.start("waybar");
        EXPECT_TRUE(qWaitFor([&item] { return !item.geometry(); })) << "two items";
        host.stop();
    }
}

TEST(StatusItem, StandsByItselfWithoutASessionBus) {
    StatusItem late([](auto) {}, true), switchedOn([](auto) {}, false);
    auto shown = content(Qt::white);
    switchedOn.setContent(shown);
    EXPECT_TRUE(stands(switchedOn, 1000));
    EXPECT_FALSE(late.geometry()) << "waits for a tray";
    shown.toolTip = "Claude: <b>\n  <img src='/dev/zero'> & " + std::string(2000, 'W') + "\n";
    late.setContent(shown);
    EXPECT_TRUE(stands(late, 5000));

    QString markup;
    for (const QWidget* const window : QApplication::topLevelWidgets())
        if (window->toolTip().size() > markup.size()) markup = window->toolTip();
    EXPECT_TRUE(Qt::mightBeRichText(markup));
    QTextDocument toolTip;
    toolTip.setHtml(markup);
    EXPECT_EQ(toolTip.toPlainText().toStdString(), shown.toolTip.substr(0, 12 + 1000) + "\n")
        << "as it stands, up to what fits";
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
    auto rows = host.rows();
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0].second["label"], "Head__ing") << "no mnemonic";
    EXPECT_EQ(rows[0].second["enabled"], false);
    EXPECT_EQ(rows[1].second["toggle-state"], 1);
    EXPECT_EQ(rows[2].second["type"], "separator");

    host.menu("AboutToShow", {0});
    const MenuItem added{"Added", {}, {}, choose("Added")};
    item->setContent(content(Qt::red, {added, heading, first, separator, gone}));
    EXPECT_EQ(host.rows().size(), 4u) << "may be open";
    host.click(rows[0].first);  // nothing: a heading
    EXPECT_EQ(host.rows().size(), 4u);
    host.click(rows[1].first);
    EXPECT_EQ(host.rows().size(), 5u) << "a click closes it";
    host.click(host.rows()[0].first);
    host.click(rows[1].first);  // an id from before the change
    host.click(12345);
    const ExportedEvent click{rows[1].first, "clicked", QDBusVariant(""), 0};
    host.menu("EventGroup", {QVariant::fromValue(QList<ExportedEvent>(10'000, click))});
    QApplication::processEvents();
    EXPECT_EQ(chosen, "FirstAddedFirstFirst") << "one of all clicks on an open menu";
    host.click(rows[3].first);
    EXPECT_EQ(item, nullptr);
}

TEST(StatusItem, RefusesCallsOfAnotherSignatureThanItsOwn) {
    Host host;
    StatusItem item([](auto) { FAIL() << "activated"; }, true);
    item.setContent(content(Qt::red, {{"First", {}, {}, [] { FAIL() << "chosen"; }}}));
    host.start("waybar");
    const QMap<QString, QString> itemMethods{
        {"Activate", "ii"}, {"SecondaryActivate", "ii"}, {"Scroll", "is"}};
    const QMap<QString, QString> menuMethods{{"GetLayout", "iias"},          {"GetProperty", "is"},
                                             {"GetGroupProperties", "aias"}, {"Event", "isvu"},
                                             {"EventGroup", "a(isvu)"},      {"AboutToShow", "i"},
                                             {"AboutToShowGroup", "ai"}};
    const QVariant ids = QVariant::fromValue(QList<int>{1});
    const QMap<QString, QVariantList> calls{{"", {}},
                                            {"i", {1}},
                                            {"is", {1, "clicked"}},
                                            {"ai", {ids}},
                                            {"ais", {ids, "First"}},
                                            {"dd", {1.5, 1.5}},
                                            {"issu", {1, "clicked", "", 0u}},
                                            {"a{sv}", {QVariantMap{{"id", 1}}}}};
    for (const auto& methods : {itemMethods, menuMethods}) {
        const bool isMenu = methods.contains("Event");
        for (const QString& method : methods.keys()) {
            for (const QString& signature : calls.keys()) {
                const auto reply = host.call(isMenu ? "/MenuBar" : "/StatusNotifierItem", method,
                                             calls[signature]);
                EXPECT_EQ(reply.type() == QDBusMessage::ErrorMessage, signature != methods[method])
                    << method.toStdString() << " " << signature.toStdString();
            }
        }
    }
    EXPECT_EQ(host.rows().size(), 1u) << "still there";
}

}  // namespace
