#include "tools/demo_film/Numerals.h"

#include <array>
#include <limits>
#include <numbers>
#include <vector>

namespace kelvo::demo {

namespace {

using Stroke = std::vector<Point>;
using Numeral = std::vector<Stroke>; ///< in a field 0.6 wide and 1 high, y downwards

constexpr float kWidth = 0.6F;
constexpr float kAdvance = 0.84F;
constexpr int kArcSteps = 20;

/// A part of an ellipse; turns count clockwise from the top.
Stroke Arc(Point centre, Point radii, double from_turns, double to_turns) {
    Stroke stroke;
    for (int i = 0; i <= kArcSteps; ++i) {
        const double turns = from_turns + (to_turns - from_turns) * i / kArcSteps;
        const Point direction = ClockDirection(turns);
        stroke.push_back({centre.x + radii.x * direction.x, centre.y + radii.y * direction.y});
    }
    return stroke;
}

Stroke Joined(Stroke first, const Stroke& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::array<Numeral, 10> MakeNumerals() {
    const Point wide{0.3F, 0.28F};
    return {{
        {Joined(Joined(Arc({0.3F, 0.3F}, {0.3F, 0.3F}, -0.25, 0.25),
                       Arc({0.3F, 0.7F}, {0.3F, 0.3F}, 0.25, 0.75)),
                {{0, 0.3F}})},
        {{{0.1F, 0.18F}, {0.34F, 0}, {0.34F, 1}}},
        {Joined(Arc({0.3F, 0.29F}, {0.29F, 0.29F}, -0.22, 0.33), {{0.01F, 1}, {0.6F, 1}})},
        {Arc({0.28F, 0.25F}, {0.27F, 0.25F}, -0.2, 0.5), Arc({0.28F, 0.72F}, wide, 0, 0.7)},
        {{{0.44F, 1}, {0.44F, 0}, {0, 0.7F}, {0.6F, 0.7F}}},
        {Joined({{0.53F, 0}, {0.1F, 0}, {0.05F, 0.45F}},
                Arc({0.28F, 0.68F}, {0.31F, 0.32F}, -0.13, 0.7))},
        {Arc({0.3F, 0.69F}, {0.3F, 0.31F}, 0, 1),
         {{0.46F, 0}, {0.22F, 0.28F}, {0.06F, 0.52F}, {0.01F, 0.66F}}},
        {{{0, 0}, {0.6F, 0}, {0.2F, 1}}},
        {Arc({0.3F, 0.24F}, {0.25F, 0.24F}, 0, 1), Arc({0.3F, 0.73F}, {0.3F, 0.27F}, 0, 1)},
        {Arc({0.3F, 0.31F}, {0.3F, 0.31F}, 0, 1),
         {{0.14F, 1}, {0.38F, 0.72F}, {0.54F, 0.48F}, {0.59F, 0.34F}}},
    }};
}

float DistanceToNumeral(Point point, const Numeral& numeral, float radius) {
    float nearest = std::numeric_limits<float>::max();
    for (const Stroke& stroke : numeral) {
        for (std::size_t i = 0; i + 1 < stroke.size(); ++i) {
            const float distance = DistanceToLine(point, stroke[i], stroke[i + 1], radius, radius);
            nearest = std::min(nearest, distance);
        }
    }
    return nearest;
}

} // namespace

void DrawNumber(Canvas& canvas, std::string_view digits, Point centre, const NumeralStyle& style) {
    static const std::array<Numeral, 10> kNumerals = MakeNumerals();
    const auto count = static_cast<float>(digits.size());
    const float width = ((count - 1) * kAdvance + kWidth) * style.height;
    Point corner{centre.x - width / 2, centre.y - style.height / 2};
    for (const char digit : digits) {
        if (digit >= '0' && digit <= '9') {
            const Numeral& numeral = kNumerals[static_cast<std::size_t>(digit - '0')];
            const Point far_corner = corner + Point{kWidth, 1} * style.height;
            const float radius = style.stroke / 2 / style.height;
            canvas.Fill(
                Box::Between(corner, far_corner, style.stroke),
                [&](Point point) {
                    const Point inside = (point - corner) * (1 / style.height);
                    return DistanceToNumeral(inside, numeral, radius) * style.height;
                },
                style.colour);
        }
        corner.x += kAdvance * style.height;
    }
}

} // namespace kelvo::demo
