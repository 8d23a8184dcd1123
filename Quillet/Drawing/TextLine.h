#pragma once

#include <memory>
#include <string>

#include "Drawing/TextStyle.h"

class QPainter;
class QTextLayout;

/// One line of text, measured and drawn from the same layout. Needs the application object.
class TextLine {
public:
    static constexpr int maxLength = 1000;  ///< Characters; more fit no screen and take seconds.

    TextLine(const std::string& text, const TextStyle& style);

    double width() const;   ///< Points.
    double height() const;  ///< Points, of the line box: ascent and descent.

    void draw(QPainter& painter, double x, double top) const;  ///< With the painter's pen.

private:
    std::shared_ptr<const QTextLayout> layout;
};
