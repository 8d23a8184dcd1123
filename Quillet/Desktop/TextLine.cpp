#include "Desktop/TextLine.h"

#include <QCache>
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

using Layout = std::shared_ptr<const QTextLayout>;

Layout laidOut(const QString& line, const QFont& font) {
    const auto layout = std::make_shared<QTextLayout>(line, font);
    layout->setCacheEnabled(true);
    layout->beginLayout();
    layout->createLine().setNumColumns(static_cast<int>(line.size()));
    layout->endLayout();
    return layout;
}

/// Refreshes draw mostly the same lines again. For the main thread, as all drawing.
Layout cached(const QString& line, const QFont& font) {
    constexpr int mostCharacters = 4096;
    // Never destroyed: at the program's end the application object is gone, and its font engines with it.
    static auto& lines = *new QCache<std::pair<QString, QFont>, Layout>(mostCharacters);
    const std::pair key(line, font);
    if (const Layout* const known = lines.object(key)) return *known;
    Layout layout = laidOut(line, font);
    lines.insert(key, new Layout(layout), 1 + line.size());
    return layout;
}

}  // namespace

TextLine::TextLine(const std::string& text, const TextStyle& style) {
    const QString line = singleLine(text);
    layout = cached(style.tabularDigits ? Fonts::withTabularDigits(line) : line, Fonts::font(style));
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
