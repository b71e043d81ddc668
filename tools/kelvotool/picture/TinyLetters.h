#pragma once
// Times in pictures: digits and a few signs of 3 x 5 dots, light on a dark ground, so that they can
// be read on any image.

#include "tools/kelvotool/picture/RgbImage.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo::tool {

inline constexpr std::uint32_t kLetterHeight = 5;
/// A letter and the gap behind it.
inline constexpr std::uint32_t kLetterStep = 4;

/// Draws digits, ':', '.' and '-'; others are gaps. What lies outside the image is left out.
/// @param dot  pixels that a dot is wide and high
void DrawLetters(RgbImage& image, std::uint32_t x, std::uint32_t y, std::string_view text,
                 std::uint32_t dot);

/// H:MM:SS, or M:SS.m below an hour.
std::string TimeText(double seconds);

} // namespace kelvo::tool
