#include "StatusItem/TrayIcon.h"

#include <QIcon>
#include <QPixmap>

#include "Windowing/X11.h"

TrayIcon::TrayIcon(StatusItem::Activate onActivate) {
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

/// The toolkit goes on believing in a tray that went while it was asked about it.
bool TrayIcon::hasHost() {
    return X11::connection() && QSystemTrayIcon::isSystemTrayAvailable() &&
           X11::isOwned("_NET_SYSTEM_TRAY_S0");
}

void TrayIcon::setContent(const StatusContent& content) {
    items = content.menu;
    QIcon picture;
    for (const QImage& image : StatusContent::sizes(content.square))
        picture.addPixmap(QPixmap::fromImage(image));
    icon.setIcon(picture);
    icon.setToolTip(content.toolkitMarkup());
    icon.show();
}

std::optional<QRect> TrayIcon::geometry() const {
    const QRect place = icon.geometry();
    return place.isEmpty() ? std::nullopt : std::optional(place);
}
