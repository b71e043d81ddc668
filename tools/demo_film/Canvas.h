#pragma once
// A picture in the making, and the shapes that are drawn on it with soft edges. A shape is its
// distance: negative inside, in pixels, so that one rule makes every edge smooth. What is drawn is
// up to ClockPicture.

#include "framework/base/Bytes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace kelvo::demo {

struct Point {
    float x = 0;
    float y = 0; ///< downwards

    friend Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
    friend Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
    friend Point operator*(Point a, float factor) { return {a.x * factor, a.y * factor}; }
};

inline float Dot(Point a, Point b) {
    return a.x * b.x + a.y * b.y;
}
inline float Length(Point a) {
    return std::sqrt(Dot(a, a));
}
/// The direction that a clock's hand has after `turns` of its way round, 0 being upwards.
Point ClockDirection(double turns);

/// Each from 0 to 1.
struct Colour {
    float red = 0;
    float green = 0;
    float blue = 0;
};
constexpr Colour Rgb(unsigned value) {
    return {static_cast<float>(value >> 16U & 255U) / 255.0F,
            static_cast<float>(value >> 8U & 255U) / 255.0F,
            static_cast<float>(value & 255U) / 255.0F};
}
constexpr Colour Mix(Colour a, Colour b, float share_of_b) {
    return {a.red + (b.red - a.red) * share_of_b, a.green + (b.green - a.green) * share_of_b,
            a.blue + (b.blue - a.blue) * share_of_b};
}

/// Pixels that a shape may touch.
struct Box {
    float left = 0;
    float top = 0;
    float right = 0;
    float bottom = 0;

    static Box Around(Point centre, float radius) {
        return {centre.x - radius, centre.y - radius, centre.x + radius, centre.y + radius};
    }
    static Box Between(Point a, Point b, float margin) {
        return {std::min(a.x, b.x) - margin, std::min(a.y, b.y) - margin,
                std::max(a.x, b.x) + margin, std::max(a.y, b.y) + margin};
    }
};

// Distances of points from shapes.

/// A line with round ends, whose radius goes from one value to another.
float DistanceToLine(Point point, Point from, Point to, float from_radius, float to_radius);
float DistanceToRoundedBox(Point point, Point centre, Point half_size, float corner_radius);

class Canvas {
public:
    Canvas(int width, int height)
        : width_(width), height_(height), changed_{0, 0, width, height},
          pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

    int Width() const { return width_; }
    int Height() const { return height_; }

    /// Every pixel of the box gets shade(point), by coverage(point) from 0 to 1.
    template <class Coverage, class Shade>
    void Blend(const Box& box, Coverage coverage, Shade shade) {
        const int left = std::max(0, static_cast<int>(std::floor(box.left)) - 1);
        const int top = std::max(0, static_cast<int>(std::floor(box.top)) - 1);
        const int right = std::min(width_, static_cast<int>(std::ceil(box.right)) + 2);
        const int bottom = std::min(height_, static_cast<int>(std::ceil(box.bottom)) + 2);
        NoteChange(left, top, right, bottom);
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) {
                const Point point{static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F};
                const float share = coverage(point);
                if (share > 0) At(x, y) = Mix(At(x, y), shade(point), std::min(share, 1.0F));
            }
        }
    }

    /// Fills the shape with one colour.
    /// @param softness  pixels from full to nothing at the edge; 1 is sharp
    template <class Distance>
    void Fill(const Box& box, Distance distance, Colour colour, float opacity = 1,
              float softness = 1) {
        Blend(
            box,
            [&](Point point) {
                return opacity * std::clamp(0.5F - distance(point) / softness, 0.0F, 1.0F);
            },
            [&](Point) { return colour; });
    }

    void FillDisc(Point centre, float radius, Colour colour, float opacity = 1);
    void FillRing(Point centre, float radius, float thickness, Colour colour, float opacity = 1);
    void FillLine(Point from, Point to, float from_radius, float to_radius, Colour colour,
                  float opacity = 1, float softness = 1);

    /// The picture in 5-5-5 pixels, rows bottom-up. Shades in between are dotted in a fixed
    /// pattern: smooth to the eye, and the same wherever nothing moved.
    /// @param bits  Width() x Height() x 2 bytes; the width must be even. Only what was drawn on
    ///              since ForgetChanges is written.
    void StoreChanges(ByteSpan bits) const;
    /// What was drawn so far is known to whoever asks next.
    void ForgetChanges() { changed_ = {width_, height_, 0, 0}; }

private:
    struct Area {
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
    };

    void NoteChange(int left, int top, int right, int bottom) {
        changed_ = {std::min(changed_.left, left), std::min(changed_.top, top),
                    std::max(changed_.right, right), std::max(changed_.bottom, bottom)};
    }
    Colour& At(int x, int y) {
        return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                       static_cast<std::size_t>(x)];
    }
    const Colour& At(int x, int y) const { return const_cast<Canvas*>(this)->At(x, y); }

    int width_;
    int height_;
    Area changed_; ///< since ForgetChanges; at first nothing is known to anybody
    std::vector<Colour> pixels_;
};

} // namespace kelvo::demo
