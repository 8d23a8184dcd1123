#include "Drawing/TextLine.h"

#include <QPainter>
#include <QTextLayout>

#include "Drawing/Fonts.h"

TextLine::TextLine(const std::string& text, const TextStyle& style) {
    const QString line = QString::fromStdString(text).left(maxLength);
    const auto made = std::make_shared<QTextLayout>(
        style.tabularDigits ? Fonts::withTabularDigits(line) : line, Fonts::font(style));
    made->setCacheEnabled(true);
    made->beginLayout();
    made->createLine().setNumColumns(static_cast<int>(line.size()));
    made->endLayout();
    layout = made;
}

double TextLine::width() const {
    return layout->lineAt(0).horizontalAdvance() / Fonts::enlargement;
}

double TextLine::height() const {
    const QTextLine line = layout->lineAt(0);
    return (line.ascent() + line.descent()) / Fonts::enlargement;
}

void TextLine::draw(QPainter& painter, double x, double top) const {
    painter.save();
    painter.translate(x, top);
    painter.scale(1 / Fonts::enlargement, 1 / Fonts::enlargement);
    layout->draw(&painter, {});
    painter.restore();
}
