#pragma once

#include <QMenu>
#include <QSystemTrayIcon>

#include "StatusItem/StatusForm.h"

/// Qt's icon, for hosts that embed X windows. It shows only squares.
class TrayIcon : public StatusForm {
public:
    explicit TrayIcon(Activate onActivate);

    static bool hasHost();

    void setContent(const StatusContent& content) override;
    std::optional<QRect> geometry() const override;

private:
    MenuItems items;
    QMenu menu;
    QSystemTrayIcon icon;
};
