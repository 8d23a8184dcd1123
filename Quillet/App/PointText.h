#pragma once

#include <string>

#include "Drawing/Geometry.h"

/// A point as a string such as "{1480, 1012}": plain decimal notation, whatever the locale.
namespace PointText {

std::string format(Point point);

/// 0, 0 for a string that doesn't parse.
Point parse(const std::string& string);

}  // namespace PointText
