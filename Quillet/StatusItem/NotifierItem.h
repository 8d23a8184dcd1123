#pragma once

#include <QDBusVirtualObject>

#include "StatusItem/ExportedMenu.h"
#include "StatusItem/NotifierHost.h"
#include "StatusItem/StatusItem.h"

/// An item shown by a StatusNotifier host, with its menu exported beside it. The toolkit's own
/// offers only squares.
class NotifierItem : public StatusItem::Form, QDBusVirtualObject {
public:
    /// `onRegistered` is called once the host has taken the item.
    NotifierItem(const QDBusConnection& bus, NotifierHost::Host host,
                 std::function<void()> onRegistered, StatusItem::Activate onActivate);
    ~NotifierItem() override;

    void setContent(const StatusContent& content) override;
    std::optional<QRect> geometry() const override { return place; }

private:
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString& path) const override;
    QVariantMap properties() const;
    void registerItem();
    void makeWay(bool isMenuOpen) const;
    void activate(QPoint position);
    void announce(const char* change);

    QDBusConnection bus;
    const NotifierHost::Host host;
    const std::function<void()> onRegistered;
    const StatusItem::Activate onActivate;
    const QString service;
    ExportedMenu menu;
    std::vector<QImage> images;
    QString toolTip;  // markup
    std::optional<QRect> place;
    bool registered = false;
};
