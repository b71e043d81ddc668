#pragma once
// One picture as a PNG file in memory.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"
#include "tools/kelvotool/picture/RgbImage.h"

#include <cstdint>
#include <vector>

namespace kelvo::tool {

/// The whole file, 8-bit red, green and blue.
/// @param significant_bits  5 where the channels were expanded from 5 bits, so that whoever reads
///                          it can know; else 8
/// @return false when memory ran out
[[nodiscard]] bool EncodePng(const RgbImage& image, unsigned significant_bits,
                             std::vector<std::uint8_t>& file);

/// A picture that was read.
struct ReadPicture {
    RgbImage image = {};
    bool lost_transparency = false; ///< it was laid on black
    bool lost_depth = false;        ///< it had more than 8 bits a channel
    bool has_five_bits = false;     ///< nothing is lost in 5-5-5 pixels
};

/// Any PNG: palettes, grey and 16 bits a channel become 8-bit red, green and blue.
/// @param largest_side  a larger picture is refused before memory is taken
/// @return BadValue for what is no PNG or is damaged, TooLarge
Result<ReadPicture> DecodePng(ByteView file, std::uint32_t largest_side);

} // namespace kelvo::tool
