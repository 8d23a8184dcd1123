#include "Desktop/TrayIcon.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPixmap>

TrayIcon::TrayIcon(StatusItem::Activate onActivate) {
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [this] { fillMenu(menu, items); });
    QObject::connect(&icon, &QSystemTrayIcon::activated, &icon,
                     [this, activate = std::move(onActivate)](QSystemTrayIcon::ActivationReason reason) {
                         // The second of two quick clicks comes as a double click, and as nothing else.
                         const bool again = reason == QSystemTrayIcon::DoubleClick;
                         if (again || reason == QSystemTrayIcon::Trigger) activate(geometry());
                     });
    icon.setContextMenu(&menu);
}

bool TrayIcon::hasHost() {
    return QGuiApplication::platformName() == "xcb" && QSystemTrayIcon::isSystemTrayAvailable();
}

void TrayIcon::setContent(const StatusContent& content) {
    items = content.menu;
    QIcon picture;
    for (const QImage& image : content.square)
        picture.addPixmap(QPixmap::fromImage(image));
    icon.setIcon(picture);
    icon.setToolTip(QString::fromStdString(content.toolTip));
    icon.setVisible(!picture.isNull());
}

std::optional<QRect> TrayIcon::geometry() const {
    const QRect place = icon.geometry();
    return place.isEmpty() ? std::nullopt : std::optional(place);
}
