#include "Drawing/Fonts.h"

#include <QFontDatabase>
#include <QRawFont>
#include <QResource>

namespace {

constexpr char16_t tabularZero = 0xE071;  // in the family's private area, up to the nine

QString loadFamily() {
    QString family;
    for (const char* face : {"Regular", "Medium", "SemiBold", "Bold", "ExtraBold"}) {
        const QResource file(QStringLiteral(":/fonts/Inter-%1.otf").arg(face));
        const auto data =
            QByteArray::fromRawData(reinterpret_cast<const char*>(file.data()), file.size());
        const int id = QFontDatabase::addApplicationFontFromData(data);  // not copied
        family = QFontDatabase::applicationFontFamilies(id).value(0, family);
    }
    return family;
}

const QString& family() {
    static const QString name = loadFamily();
    return name;
}

}  // namespace

// The initializer of a static library's resources has to be called, and only from outside any
// namespace.
static void initializeResources() {
    Q_INIT_RESOURCE(fonts);
}

QFont Fonts::font(const TextStyle& style) {
    static const bool initialized = (initializeResources(), true);
    Q_UNUSED(initialized);
    QFont font(family());
    font.setPixelSize(qRound(style.size * enlargement));
    font.setWeight(static_cast<QFont::Weight>(style.weight));
    font.setLetterSpacing(QFont::AbsoluteSpacing, style.kern * enlargement);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    return font;
}

QString Fonts::withTabularDigits(QString text) {
    static const bool supported =
        QRawFont::fromFont(font({12})).supportsCharacter(uint(tabularZero));
    if (!supported) return text;
    for (QChar& c : text) {
        if (c >= u'0' && c <= u'9') c = QChar(tabularZero + (c.unicode() - u'0'));
    }
    return text;
}
