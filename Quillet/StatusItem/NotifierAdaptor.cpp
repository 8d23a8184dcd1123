#include "StatusItem/NotifierAdaptor.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QtEndian>

QDBusArgument& operator<<(QDBusArgument& out, const NotifierPixmap& pixmap) {
    out.beginStructure();
    out << pixmap.width << pixmap.height << pixmap.pixels;
    out.endStructure();
    return out;
}

QDBusArgument& operator<<(QDBusArgument& out, const NotifierToolTip& toolTip) {
    out.beginStructure();
    out << toolTip.iconName << toolTip.icon << toolTip.title << toolTip.markup;
    out.endStructure();
    return out;
}

// Qt DBus asks for readers too, but nobody sends such values to us.
const QDBusArgument& operator>>(const QDBusArgument& in, NotifierPixmap&) {
    return in;
}
const QDBusArgument& operator>>(const QDBusArgument& in, NotifierToolTip&) {
    return in;
}

namespace {

NotifierPixmap pixmap(const QImage& image) {
    QImage pixels = image.convertToFormat(QImage::Format_ARGB32);
    qToBigEndian<quint32>(pixels.constBits(), pixels.sizeInBytes() / 4, pixels.bits());
    return {pixels.width(),
            pixels.height(),
            {reinterpret_cast<const char*>(pixels.constBits()), pixels.sizeInBytes()}};
}

}  // namespace

NotifierAdaptor::NotifierAdaptor(QObject* object, std::function<void(QPoint)> onActivate)
    : QDBusAbstractAdaptor(object), activate(std::move(onActivate)) {
    qDBusRegisterMetaType<NotifierPixmap>();
    qDBusRegisterMetaType<QList<NotifierPixmap>>();
    qDBusRegisterMetaType<NotifierToolTip>();
}

void NotifierAdaptor::show(const std::vector<QImage>& newImages, const QString& newMarkup) {
    if (std::exchange(images, newImages) != newImages) emit NewIcon();
    if (std::exchange(markup, newMarkup) != newMarkup) emit NewToolTip();
}

QList<NotifierPixmap> NotifierAdaptor::iconPixmap() const {
    QList<NotifierPixmap> pixmaps;
    for (const QImage& image : images)
        pixmaps << pixmap(image);
    return pixmaps;
}
