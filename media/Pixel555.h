#pragma once
// The pixel formats of a film and the conversions between 8-bit colour channels and 16-bit pixels.
// A 16-bit pixel is 5-5-5: red in bits 10 to 14, green in 5 to 9, blue in 0 to 4, bit 15 unused.

#include "platform/base/types.h"

#include <cstdint>

namespace kelvo::pixel {

/// The 8-bit channels of a 16-bit pixel; their low three bits are 0.
constexpr std::uint8_t Red(std::uint16_t pixel) {
    return static_cast<std::uint8_t>(((pixel & 0x7C00U) >> 10U) << 3U);
}
constexpr std::uint8_t Green(std::uint16_t pixel) {
    return static_cast<std::uint8_t>(((pixel & 0x03E0U) >> 5U) << 3U);
}
constexpr std::uint8_t Blue(std::uint16_t pixel) {
    return static_cast<std::uint8_t>((pixel & 0x001FU) << 3U);
}

/// The nearest 5-bit value of an 8-bit channel, never beyond 31.
constexpr unsigned Quantize5(std::uint8_t value) {
    return value >= 252 ? 31U : (value >> 3U) + ((value >> 2U) & 1U);
}

/// A 16-bit pixel of three channels, each rounded to nearest.
constexpr std::uint16_t PackRGB555(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return static_cast<std::uint16_t>((Quantize5(red) << 10U) | (Quantize5(green) << 5U) |
                                      Quantize5(blue));
}

/// A 16-bit pixel of three channels, the low three bits of each cut off.
constexpr std::uint16_t PackTruncated(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return static_cast<std::uint16_t>(((red >> 3U) << 10U) | ((green >> 3U) << 5U) | (blue >> 3U));
}

/// A 16-bit pixel of a colour (red in the low byte), truncated.
constexpr std::uint16_t PackColour(COLORREF colour) {
    return PackTruncated(GetRValue(colour), GetGValue(colour), GetBValue(colour));
}

/// Bytes of one stored row: filled up to a multiple of 4.
/// @param width  pixels; any value, the result does not wrap
constexpr std::uint64_t RowStride(std::uint32_t width, std::uint32_t bits_per_pixel) {
    const std::uint64_t bits = std::uint64_t{width} * bits_per_pixel;
    return ((bits + 31U) & ~std::uint64_t{31}) / 8U;
}

} // namespace kelvo::pixel
