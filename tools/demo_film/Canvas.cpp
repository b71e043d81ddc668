#include "tools/demo_film/Canvas.h"

#include "framework/base/ByteWriter.h"

#include <array>
#include <numbers>

namespace kelvo::demo {

namespace {

constexpr int kPatternSide = 8;
constexpr float kHighest = 31.0F; // of a channel of 5 bits

/// The ordered pattern of thresholds, each once: neighbours differ as much as they can.
constexpr std::array<float, kPatternSide * kPatternSide> MakePattern() {
    std::array<float, kPatternSide * kPatternSide> pattern{};
    for (unsigned y = 0; y < kPatternSide; ++y) {
        for (unsigned x = 0; x < kPatternSide; ++x) {
            unsigned rank = 0;
            for (unsigned bit = 0; bit < 3; ++bit) {
                const unsigned x_bit = x >> bit & 1U;
                const unsigned y_bit = y >> bit & 1U;
                rank = rank << 2U | (x_bit ^ y_bit) << 1U | y_bit;
            }
            pattern[y * kPatternSide + x] =
                (static_cast<float>(rank) + 0.5F) / (kPatternSide * kPatternSide);
        }
    }
    return pattern;
}
constexpr auto kPattern = MakePattern();

unsigned Quantize(float value, float threshold) {
    return static_cast<unsigned>(std::clamp(value * kHighest + threshold, 0.0F, kHighest));
}

} // namespace

Point ClockDirection(double turns) {
    const double angle = turns * 2 * std::numbers::pi;
    return {static_cast<float>(std::sin(angle)), static_cast<float>(-std::cos(angle))};
}

float DistanceToLine(Point point, Point from, Point to, float from_radius, float to_radius) {
    const Point along = to - from;
    const float length_squared = Dot(along, along);
    const float share =
        length_squared > 0 ? std::clamp(Dot(point - from, along) / length_squared, 0.0F, 1.0F) : 0;
    return Length(point - from - along * share) - (from_radius + (to_radius - from_radius) * share);
}

float DistanceToRoundedBox(Point point, Point centre, Point half_size, float corner_radius) {
    const float x = std::abs(point.x - centre.x) - half_size.x + corner_radius;
    const float y = std::abs(point.y - centre.y) - half_size.y + corner_radius;
    const float outside = Length({std::max(x, 0.0F), std::max(y, 0.0F)});
    return outside + std::min(std::max(x, y), 0.0F) - corner_radius;
}

void Canvas::FillDisc(Point centre, float radius, Colour colour, float opacity) {
    Fill(
        Box::Around(centre, radius), [&](Point point) { return Length(point - centre) - radius; },
        colour, opacity);
}

void Canvas::FillRing(Point centre, float radius, float thickness, Colour colour, float opacity) {
    Fill(
        Box::Around(centre, radius + thickness / 2),
        [&](Point point) { return std::abs(Length(point - centre) - radius) - thickness / 2; },
        colour, opacity);
}

void Canvas::FillLine(Point from, Point to, float from_radius, float to_radius, Colour colour,
                      float opacity, float softness) {
    Fill(
        Box::Between(from, to, std::max(from_radius, to_radius) + softness),
        [&](Point point) { return DistanceToLine(point, from, to, from_radius, to_radius); },
        colour, opacity, softness);
}

void Canvas::StoreChanges(ByteSpan bits) const {
    for (int y = changed_.top; y < changed_.bottom; ++y) {
        const int first = (height_ - 1 - y) * width_ + changed_.left;
        ByteWriter writer{bits.subspan(static_cast<std::size_t>(first) * 2)};
        for (int x = changed_.left; x < changed_.right; ++x) {
            const float threshold = kPattern[static_cast<std::size_t>(
                y % kPatternSide * kPatternSide + x % kPatternSide)];
            const Colour& colour = At(x, y);
            const unsigned pixel = Quantize(colour.red, threshold) << 10U |
                                   Quantize(colour.green, threshold) << 5U |
                                   Quantize(colour.blue, threshold);
            writer.WriteU16(static_cast<std::uint16_t>(pixel));
        }
    }
}

} // namespace kelvo::demo
