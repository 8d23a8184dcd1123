#include "StatusItem/TrayIcon.h"

#include <QIcon>
#include <QPixmap>

#include "Windowing/WindowSystem.h"
#include "Windowing/X11.h"

TrayIcon::TrayIcon(Activate onActivate) {
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [this] { fillMenu(menu, items); });
    QObject::connect(
        &icon, &QSystemTrayIcon::activated, &icon,
        [this, activate = std::move(onActivate)](QSystemTrayIcon::ActivationReason reason) {
            // The second of two quick clicks comes as a double click, and as nothing else.
            const bool again = reason == QSystemTrayIcon::DoubleClick;
            if (again || reason == QSystemTrayIcon::Trigger) activate({geometry(), {}});
        });
    icon.setContextMenu(&menu);
}

/// Qt misses the end of a tray that went just before it was watched, and may wait long for a
/// watcher, so the selection is asked first.
bool TrayIcon::hasHost() {
    return WindowSystem::isX11() && X11::isOwned("_NET_SYSTEM_TRAY_S0") &&
           QSystemTrayIcon::isSystemTrayAvailable();
}

void TrayIcon::setContent(const StatusContent& content) {
    items = content.menu;
    QIcon picture;
    for (const QImage& image : StatusContent::sizes(content.square))
        picture.addPixmap(QPixmap::fromImage(image));
    icon.setIcon(picture);
    icon.setToolTip(content.richText());
    icon.show();
}

/// Until the icon is embedded, Qt tells the screen's corner.
std::optional<QRect> TrayIcon::geometry() const {
    const QRect place = icon.geometry();
    return place.isEmpty() || place.topLeft().isNull() ? std::nullopt : std::optional(place);
}
