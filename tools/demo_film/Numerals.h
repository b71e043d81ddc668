#pragma once
// The ten digits, drawn as strokes with round ends in any size.

#include "tools/demo_film/Canvas.h"

#include <string_view>

namespace kelvo::demo {

struct NumeralStyle {
    float height = 0;
    float stroke = 0; ///< thickness
    Colour colour;
};

/// Draws digits in a row, its middle at `centre`. Other characters leave a gap.
void DrawNumber(Canvas& canvas, std::string_view digits, Point centre, const NumeralStyle& style);

} // namespace kelvo::demo
