#include "App/PointText.h"

#include <QLocale>
#include <QStringList>
#include <cmath>

namespace {

QString decimal(double value) {
    return QString::number(value, 'f', QLocale::FloatingPointShortest);
}

}  // namespace

std::string PointText::format(Point point) {
    return QStringLiteral("{%1, %2}").arg(decimal(point.x), decimal(point.y)).toStdString();
}

Point PointText::parse(const std::string& string) {
    const QString text = QString::fromStdString(string).trimmed();
    const QStringList numbers = text.mid(1).chopped(text.size() > 1 ? 1 : 0).split(u',');
    if (!text.startsWith(u'{') || !text.endsWith(u'}') || numbers.size() != 2) return {};
    bool hasX = false, hasY = false;
    const Point point{numbers[0].toDouble(&hasX), numbers[1].toDouble(&hasY)};
    const bool isPoint = hasX && hasY && std::isfinite(point.x) && std::isfinite(point.y);
    return isPoint ? point : Point();
}
