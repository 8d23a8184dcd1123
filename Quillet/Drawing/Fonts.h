#pragma once

#include <QFont>

#include "Drawing/TextLine.h"

/// The bundled family, so that pictures look alike on every machine, also where no font is
/// installed.
namespace Fonts {

/// The toolkit takes whole pixels only for a font's size, so lines are laid out enlarged and drawn
/// smaller again.
inline constexpr double enlargement = 20;

/// Enlarged, unhinted and without subpixel shifts, the same whatever the screen's resolution.
QFont font(const TextStyle& style);

/// `text` with digits of the family's own equal-width forms. For painting alone: the characters are
/// private ones.
QString withTabularDigits(QString text);

}  // namespace Fonts
