#pragma once
// Reading device-independent bitmaps: what a header claims, checked, and rows made into 32-bit
// pixels. No byte outside of the rows that the header describes is read.

#include "platform/base/bitmaps.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelvo::desktop {

/// A picture in somebody else's memory; lives as long as the bytes.
struct DibView {
    int width = 0;
    int height = 0;
    bool top_down = false;
    int bit_count = 0;      ///< 1, 4, 8, 16 (5-5-5), 24 or 32
    std::size_t stride = 0; ///< bytes from row to row
    const std::uint8_t* bits = nullptr;
    std::array<std::uint32_t, 256> palette{}; ///< 0xffRRGGBB; unused entries are black

    /// @param y  from the picture's top
    const std::uint8_t* Row(int y) const {
        return bits + stride * static_cast<std::size_t>(top_down ? y : height - 1 - y);
    }
};

/// @return nothing when the header describes no picture that can be drawn.
std::optional<DibView> ViewDib(const BITMAPINFO* info, const void* bits);

/// Header, palette and rows in one block.
/// @return nothing, too, when any of it lies outside of the block.
std::optional<DibView> ViewPackedDib(std::span<const std::uint8_t> block);

/// Makes pixels [first, first + count) of a row into 0xffRRGGBB.
void ExpandPixels(const DibView& dib, const std::uint8_t* row, int first, int count,
                  std::uint32_t* out);

} // namespace kelvo::desktop
