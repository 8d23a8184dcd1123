#pragma once

#include <QFont>

#include "Drawing/TextStyle.h"

/// The bundled family, so that pictures look alike on every machine.
namespace Fonts {

/// Qt rounds a font's size to whole pixels, so lines are laid out enlarged and drawn smaller again.
inline constexpr double enlargement = 20;

/// Enlarged, unhinted and without subpixel shifts, the same whatever the screen's resolution.
QFont font(const TextStyle& style);

/// `text` with digits of equal width. For painting alone: they are private characters of the
/// family.
QString withTabularDigits(QString text);

}  // namespace Fonts
