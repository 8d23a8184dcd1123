#include "Drawing/TextLine.h"

#include <QCoreApplication>
#include <QPainter>
#include <QTextLayout>

#include "Drawing/Cache.h"
#include "Drawing/Fonts.h"

namespace {

QString singleLine(const std::string& text) {
    QString line = QString::fromStdString(text).left(TextLine::maxLength);
    for (QChar& c : line) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator) {
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

using Layouts = QCache<std::pair<QString, QFont>, Layout>;

Layouts& layouts() {
    constexpr int most = 5000;  // characters, with as many as a line's fixed size is worth
    static Layouts cache(most);
    // Their font engines must not outlive the application object.
    static const bool endsInTime = (qAddPostRoutine([] { layouts().clear(); }), true);
    Q_UNUSED(endsInTime);
    return cache;
}

Layout layoutOf(const QString& line, const QFont& font) {
    constexpr int fixed = 32;
    return Cache::findOrMake(
        layouts(), std::pair(line, font), [&] { return laidOut(line, font); },
        [&](const Layout&) { return fixed + line.size(); });
}

}  // namespace

TextLine::TextLine(const std::string& text, const TextStyle& style) {
    const QString line = singleLine(text);
    layout =
        layoutOf(style.tabularDigits ? Fonts::withTabularDigits(line) : line, Fonts::font(style));
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
