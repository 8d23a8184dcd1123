#include "StatusItem/StatusForm.h"

#include <QStringList>

#include "Drawing/TextLine.h"

QString StatusContent::markup() const {
    QStringList lines = QString::fromStdString(toolTip).split(u'\n');
    for (QString& line : lines)
        line = line.left(TextLine::maxLength).toHtmlEscaped();
    return lines.join(u'\n');
}

QString StatusContent::richText() const {
    return QStringLiteral("<span style=\"white-space: pre\">%1</span>").arg(markup());
}
