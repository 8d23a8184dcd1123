#pragma once

#include <string>
#include <string_view>

#include "Drawing/Geometry.h"

/// A point as text, such as "{1480, 1012}": plain decimal notation, whatever the locale.
namespace PointText {

std::string format(Point point);

/// Text that doesn't parse gives 0, 0.
Point parse(std::string_view text);

}  // namespace PointText
