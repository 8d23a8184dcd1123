#pragma once

#include <QDBusConnection>

#include "StatusItem/ExportedMenu.h"
#include "StatusItem/NotifierHost.h"
#include "StatusItem/StatusForm.h"

class NotifierAdaptor;

/// An item shown by a StatusNotifier host, with its menu exported beside it. Qt's own tray icon
/// offers such hosts only squares.
class NotifierItem : public QObject, public StatusForm {
public:
    /// `onRegistered` is called once the host has taken the item.
    NotifierItem(const QDBusConnection& bus, NotifierHost::Host host,
                 std::function<void()> onRegistered, Activate onActivate);
    ~NotifierItem() override;

    void setContent(const StatusContent& content) override;
    std::optional<QRect> geometry() const override { return place; }

private:
    void activate(QPoint position);
    void registerItem();
    void hideBars(bool isMenuOpen) const;

    QDBusConnection bus;
    const NotifierHost::Host host;
    const std::function<void()> onRegistered;
    const Activate onActivate;
    const QString service;
    NotifierAdaptor* const adaptor;
    QObject menuObject;
    ExportedMenu* const menu;
    std::optional<QRect> place;
    bool isRegistered = false;
};
