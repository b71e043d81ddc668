#pragma once
// One picture as a BMP file in memory.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"
#include "tools/kelvotool/picture/PngFile.h"
#include "tools/kelvotool/picture/RgbImage.h"

#include <cstdint>
#include <vector>

namespace kelvo::tool {

/// The whole file, rows from the bottom up.
/// @param bits_per_pixel  16 (5-5-5) or 24
void EncodeBmp(const RgbImage& image, unsigned bits_per_pixel, std::vector<std::uint8_t>& file);

/// 1, 4 and 8 bits with a palette, 16, 24 and 32 bits, 16 and 32 bits with masks; from the bottom
/// up or from the top down.
/// @param largest_side  a larger picture is refused before memory is taken
/// @return BadValue for what is no BMP or a compressed one, EndsEarly, TooLarge
Result<ReadPicture> DecodeBmp(ByteView file, std::uint32_t largest_side);

} // namespace kelvo::tool
