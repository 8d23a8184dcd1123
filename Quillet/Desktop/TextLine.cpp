#include "Desktop/TextLine.h"

#include <QPainter>
#include <QTextLayout>

#include "Desktop/Fonts.h"

namespace {

QString singleLine(const std::string& text) {
    QString line = QString::fromStdString(text);
    for (QChar& c : line) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator) {
            c = u' ';
        }
    }
    return line;
}

}  // namespace

TextLine::TextLine(const std::string& text, const TextStyle& style) {
    const QString line = singleLine(text);
    layout = std::make_unique<QTextLayout>(style.tabularDigits ? Fonts::withTabularDigits(line) : line,
                                           Fonts::font(style));
    layout->setCacheEnabled(true);
    layout->beginLayout();
    layout->createLine().setNumColumns(static_cast<int>(line.size()));
    layout->endLayout();
}

TextLine::~TextLine() = default;
TextLine::TextLine(TextLine&&) noexcept = default;
TextLine& TextLine::operator=(TextLine&&) noexcept = default;

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
