// What any Qt program with a tray icon pays: an icon of 22 by 22 points and its menu.
#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QPixmap picture(22, 22);
    picture.fill(Qt::darkCyan);
    QMenu menu;
    menu.addAction("Quit", &QCoreApplication::quit);
    QSystemTrayIcon icon(picture);
    icon.setContextMenu(&menu);
    icon.show();
    return QApplication::exec();
}
