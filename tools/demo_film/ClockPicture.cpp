#include "tools/demo_film/ClockPicture.h"

#include "tools/demo_film/Numerals.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace kelvo::demo {

namespace {

constexpr Point kCentre{320, 240};
constexpr float kFaceRadius = 200;
constexpr float kBezelRadius = 209;
constexpr float kGlowReach = 30; // of the pulse, beyond the bezel

constexpr Point kSmallDial{320, 163};
constexpr float kSmallRadius = 46;
constexpr Point kWindow{320, 322}; // in which the image's number stands
constexpr Point kWindowHalf{52, 23};

constexpr Colour kNight = Rgb(0x0A0E1A);
constexpr Colour kDusk = Rgb(0x25304E);
constexpr Colour kFaceMiddle = Rgb(0xFBF7EC);
constexpr Colour kFaceEdge = Rgb(0xE2DCCB);
constexpr Colour kSteelLight = Rgb(0xC9D0DC);
constexpr Colour kSteelDark = Rgb(0x4A5266);
constexpr Colour kInk = Rgb(0x1D2333);
constexpr Colour kInkPale = Rgb(0x8A8C93);
constexpr Colour kHand = Rgb(0xD8402A);
constexpr Colour kGlow = Rgb(0xFFB347);
constexpr Colour kWindowPaper = Rgb(0x1B2130);
constexpr Colour kWindowDigits = Rgb(0xFFE9C2);

constexpr int kTicks = 60;
constexpr int kPulseImages = 9;

Point Around(Point centre, double turns, float radius) {
    return centre + ClockDirection(turns) * radius;
}

void DrawBackground(Canvas& canvas) {
    const Box all{0, 0, static_cast<float>(canvas.Width()), static_cast<float>(canvas.Height())};
    canvas.Blend(
        all, [](Point) { return 1.0F; },
        [](Point point) {
            const float far = Length(point - kCentre + Point{0, 90}) / 470;
            return Mix(kDusk, kNight, std::clamp(far * far * 1.15F, 0.0F, 1.0F));
        });
    // The clock's own shadow on the wall.
    canvas.Fill(
        Box::Around(kCentre + Point{5, 12}, kBezelRadius + 30),
        [](Point point) { return Length(point - kCentre - Point{5, 12}) - kBezelRadius; },
        Rgb(0x000000), 0.55F, 44);
}

void DrawFace(Canvas& canvas) {
    // Lit from above, like everything on it.
    canvas.Blend(
        Box::Around(kCentre, kBezelRadius),
        [](Point point) {
            return std::clamp(0.5F - Length(point - kCentre) + kBezelRadius, 0.0F, 1.0F);
        },
        [](Point point) {
            const float height = (point.y - kCentre.y) / kBezelRadius;
            return Mix(kSteelLight, kSteelDark, 0.5F + 0.5F * height);
        });
    canvas.FillRing(kCentre, kFaceRadius + 2, 4, kSteelDark);
    canvas.Blend(
        Box::Around(kCentre, kFaceRadius),
        [](Point point) {
            return std::clamp(0.5F - Length(point - kCentre) + kFaceRadius, 0.0F, 1.0F);
        },
        [](Point point) {
            const float far = Length(point - kCentre + Point{20, 50}) / (kFaceRadius + 50);
            return Mix(kFaceMiddle, kFaceEdge, std::clamp(far * far, 0.0F, 1.0F));
        });
}

void DrawTicks(Canvas& canvas) {
    for (int tick = 0; tick < kTicks; ++tick) {
        const double turns = static_cast<double>(tick) / kTicks;
        const bool is_hour = tick % 5 == 0;
        const float inner = is_hour ? kFaceRadius - 26 : kFaceRadius - 18;
        const float radius = is_hour ? 2.3F : 0.9F;
        canvas.FillLine(Around(kCentre, turns, inner), Around(kCentre, turns, kFaceRadius - 10),
                        radius, radius, kInk);
        if (!is_hour) continue;
        const std::string number = std::to_string(tick == 0 ? kTicks : tick);
        DrawNumber(canvas, number, Around(kCentre, turns, kFaceRadius - 48),
                   {.height = 20, .stroke = 2.6F, .colour = kInk});
    }
}

void DrawSmallDial(Canvas& canvas, int images_per_second) {
    canvas.FillDisc(kSmallDial, kSmallRadius, kFaceEdge, 0.75F);
    canvas.FillRing(kSmallDial, kSmallRadius, 1.4F, kInkPale);
    for (int image = 0; image < images_per_second; ++image) {
        const double turns = static_cast<double>(image) / images_per_second;
        canvas.FillDisc(Around(kSmallDial, turns, kSmallRadius - 9), 2.1F, kInkPale, 0.55F);
    }
}

void DrawWindow(Canvas& canvas) {
    const auto distance = [](Point half_size) {
        return [half_size](Point point) {
            return DistanceToRoundedBox(point, kWindow, half_size, 11);
        };
    };
    const Box box = Box::Between(kWindow - kWindowHalf, kWindow + kWindowHalf, 4);
    canvas.Fill(box, distance(kWindowHalf + Point{2.5F, 2.5F}), kInkPale);
    canvas.Fill(box, distance(kWindowHalf), kWindowPaper);
}

/// 1 at a full second, then less with every image, then 0.
float PulseOf(int image, int images_per_second) {
    const int since = image % images_per_second;
    if (since >= kPulseImages) return 0;
    const float rest = 1 - static_cast<float>(since) / kPulseImages;
    return rest * rest;
}

void DrawPulse(Canvas& canvas, float strength) {
    if (strength <= 0) return;
    const float outer = kBezelRadius + kGlowReach;
    canvas.Blend(
        Box::Around(kCentre, outer),
        [strength](Point point) {
            const float beyond = Length(point - kCentre) - kBezelRadius;
            if (beyond < -9) return 0.0F;
            if (beyond < 0) return strength; // the bezel itself
            const float fading = std::max(0.0F, 1 - beyond / kGlowReach);
            return strength * fading * fading;
        },
        [](Point) { return kGlow; });
    canvas.FillDisc(kSmallDial, kSmallRadius - 15, kGlow, strength);
}

void DrawSmallHand(Canvas& canvas, int image, int images_per_second) {
    const int since = image % images_per_second;
    for (int lit = 0; lit <= since; ++lit) {
        const double turns = static_cast<double>(lit) / images_per_second;
        canvas.FillDisc(Around(kSmallDial, turns, kSmallRadius - 9), 2.6F, kHand);
    }
    const double turns = static_cast<double>(since) / images_per_second;
    canvas.FillLine(kSmallDial, Around(kSmallDial, turns, kSmallRadius - 17), 1.6F, 1.1F, kInk);
    canvas.FillDisc(kSmallDial, 3.2F, kInk);
}

void DrawHand(Canvas& canvas, double turns) {
    const Point tip = Around(kCentre, turns, kFaceRadius - 14);
    const Point tail = Around(kCentre, turns + 0.5, 44);
    const Point weight = Around(kCentre, turns + 0.5, 34);
    const Point shadow{3, 5};
    canvas.FillLine(tail + shadow, tip + shadow, 3.2F, 1.4F, kInk, 0.22F, 5);
    canvas.FillLine(tail, tip, 2.7F, 1.1F, kHand);
    canvas.FillDisc(weight, 7.5F, kHand);
    canvas.FillDisc(kCentre, 9, kHand);
    canvas.FillDisc(kCentre, 3.2F, kFaceMiddle);
}

} // namespace

ClockPicture::ClockPicture(int images_per_second)
    : images_per_second_(images_per_second), still_(kWidth, kHeight),
      still_bits_(std::size_t{kWidth} * kHeight * 2) {
    DrawBackground(still_);
    DrawFace(still_);
    DrawTicks(still_);
    DrawSmallDial(still_, images_per_second);
    DrawWindow(still_);
    still_.StoreChanges(still_bits_);
    still_.ForgetChanges();
}

void ClockPicture::Draw(int image, ByteSpan bits) const {
    Canvas canvas = still_;
    DrawPulse(canvas, PulseOf(image, images_per_second_));
    DrawSmallHand(canvas, image, images_per_second_);
    DrawNumber(canvas, fmt::format("{:03}", image), kWindow,
               {.height = 27, .stroke = 3.4F, .colour = kWindowDigits});
    const double seconds = static_cast<double>(image) / images_per_second_;
    DrawHand(canvas, seconds / kTicks);
    std::ranges::copy(still_bits_, bits.begin());
    canvas.StoreChanges(bits);
}

} // namespace kelvo::demo
