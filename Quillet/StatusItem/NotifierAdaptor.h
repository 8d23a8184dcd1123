#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QImage>
#include <functional>
#include <vector>

struct NotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;  ///< ARGB, most significant byte first.
};

struct NotifierToolTip {
    QString iconName;
    QList<NotifierPixmap> icon;
    QString title;
    QString markup;
};

/// A status item as its host sees it. It has no ContextMenu: a host that draws no exported menu
/// would get one without a place.
class NotifierAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category MEMBER category CONSTANT)
    Q_PROPERTY(QString Id MEMBER id CONSTANT)
    Q_PROPERTY(QString Title MEMBER title CONSTANT)
    Q_PROPERTY(QString Status MEMBER status CONSTANT)
    Q_PROPERTY(int WindowId MEMBER windowID CONSTANT)
    Q_PROPERTY(QString IconName MEMBER none CONSTANT)
    Q_PROPERTY(QString IconThemePath MEMBER none CONSTANT)
    Q_PROPERTY(QString OverlayIconName MEMBER none CONSTANT)
    Q_PROPERTY(QString AttentionIconName MEMBER none CONSTANT)
    Q_PROPERTY(QList<NotifierPixmap> IconPixmap READ iconPixmap)
    Q_PROPERTY(NotifierToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu MEMBER isMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu MEMBER menu CONSTANT)

public:
    static constexpr const char* menuPath = "/MenuBar";

    NotifierAdaptor(QObject* object, std::function<void(QPoint)> onActivate);

    void show(const std::vector<QImage>& images, const QString& markup);

    Q_SLOT void Activate(int x, int y) { activate({x, y}); }
    Q_SLOT void SecondaryActivate(int x, int y) { activate({x, y}); }
    Q_SLOT void Scroll(int, const QString&) {}

signals:
    void NewIcon();
    void NewToolTip();

private:
    QList<NotifierPixmap> iconPixmap() const;
    NotifierToolTip toolTip() const { return {none, {}, title, markup}; }

    const std::function<void(QPoint)> activate;
    std::vector<QImage> images;
    QString markup;
    const QString category = QStringLiteral("ApplicationStatus"), status = QStringLiteral("Active");
    const QString id = QStringLiteral("quillet"), title = QStringLiteral("Quillet"), none;
    const int windowID = 0;
    const bool isMenu = false;
    const QDBusObjectPath menu{menuPath};
};
