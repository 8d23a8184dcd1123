#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QTimer>
#include <functional>
#include <map>
#include <utility>

#include "Windowing/MenuItem.h"

struct ExportedRow {
    int id = 0;
    QVariantMap properties;
};

struct ExportedLayout {
    ExportedRow menu;
    QList<ExportedRow> rows;
};

struct ExportedEvent {
    int id = 0;
    QString kind;
    QDBusVariant data;
    uint time = 0;
};

/// A menu on the session bus that the tray host draws.
class ExportedMenu : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version MEMBER version CONSTANT)
    Q_PROPERTY(QString TextDirection MEMBER textDirection CONSTANT)
    Q_PROPERTY(QString Status MEMBER status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath MEMBER iconThemePath CONSTANT)

public:
    explicit ExportedMenu(QObject* object);  ///< The object is the caller's to register on the bus.

    /// A host closes or cuts off an open menu when its rows change, so changes wait while the menu
    /// may be open.
    void setItems(MenuItems items);

    /// Not every host tells that it closed the menu; it then counts as open for some seconds.
    std::function<void(bool mayBeOpen)> onOpenChange;

public slots:  // the interface's methods, under its own names
    uint GetLayout(int parent, int depth, const QStringList& names, ExportedLayout& layout);
    QList<ExportedRow> GetGroupProperties(const QList<int>& ids, const QStringList& names);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& kind, const QDBusVariant& data, uint time);
    QList<int> EventGroup(const QList<ExportedEvent>& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& unknownIDs);

signals:
    void LayoutUpdated(uint revision, int parent);

private:
    struct Row {
        int id;
        MenuItem item;
    };

    void opened();
    void closed();
    void chosen(int id);
    void publish();

    std::vector<Row> rows;  ///< As the host knows them.
    MenuItems newest;
    bool isWaiting = false;  ///< `newest` looks different from `rows`.
    bool isChosen = false;   ///< A row, whose action runs soon.
    /// By title and occurrence, so that a late click hits its row.
    std::map<std::pair<std::string, int>, int> ids;
    uint revision = 0;
    QTimer openTimeout;

    const uint version = 3;
    const QString textDirection = QStringLiteral("ltr"), status = QStringLiteral("normal");
    const QStringList iconThemePath;
};
