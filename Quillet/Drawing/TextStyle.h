#pragma once

enum class FontWeight { regular = 400, medium = 500, semibold = 600, bold = 700, heavy = 800 };

struct TextStyle {
    double size = 0;  ///< Points.
    FontWeight weight = FontWeight::regular;
    double kern = 0;             ///< Points of extra space after each character.
    bool tabularDigits = false;  ///< Digits of equal width.
};
