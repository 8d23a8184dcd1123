#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QTimer>
#include <functional>
#include <map>
#include <utility>

#include "Windowing/MenuItem.h"

/// A menu on the session bus that the tray host draws (com.canonical.dbusmenu).
class ExportedMenu : public QDBusVirtualObject {
public:
    ExportedMenu(const QDBusConnection& bus, const QString& path);
    ~ExportedMenu() override;

    /// A host that has the menu open closes it or cuts it off when rows change, so changes wait
    /// while it may be open.
    void setItems(MenuItems items);

    /// Not every host tells that it closed the menu; it then counts as open for some seconds.
    std::function<void(bool mayBeOpen)> onOpenChange;

private:
    struct Row {
        int id;
        MenuItem item;
    };
    using Handler = QVariantList (ExportedMenu::*)(const QVariantList& arguments);

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString& path) const override;
    QVariantList getLayout(const QVariantList& arguments);
    QVariantList getGroupProperties(const QVariantList& arguments);
    QVariantList getProperty(const QVariantList& arguments);
    QVariantList aboutToShow(const QVariantList& arguments);
    QVariantList aboutToShowGroup(const QVariantList& arguments);
    QVariantList event(const QVariantList& arguments);
    QVariantList eventGroup(const QVariantList& arguments);

    const Row* find(int id) const;
    void opened();
    void closed();
    void chosen(int id);
    void handleEvent(int id, const QString& kind);
    void publish();

    QDBusConnection bus;
    const QString path;
    std::vector<Row> rows;  ///< As the host knows them.
    MenuItems newest;
    bool waiting = false;  ///< The newest look different.
    /// By title and occurrence, so that a late click hits its row.
    std::map<std::pair<std::string, int>, int> ids;
    unsigned revision = 0;
    QTimer mayBeOpen;
};
