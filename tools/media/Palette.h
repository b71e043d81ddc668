#pragma once
// 256 colours for an image that may have more: its own where they suffice, else those that stand
// for most of its pixels.

#include "framework/base/Bytes.h"

#include <array>
#include <cstdint>
#include <vector>

namespace kelvo::media_tool {

inline constexpr std::size_t kPaletteColours = 256;

class Palette {
public:
    /// Chooses the colours for an image of red, green, blue bytes. @return whether none is lost
    bool Choose(ByteView pixels);
    /// 0xFFRRGGBB each.
    const std::array<std::uint32_t, kPaletteColours>& Colours() const { return colours_; }
    /// The colour that stands for a pixel, after Choose for its image.
    std::uint8_t IndexOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) const;

private:
    bool TakeOwnColours(ByteView pixels);
    void CutBoxes(ByteView pixels);

    std::array<std::uint32_t, kPaletteColours> colours_{};
    bool exact_ = false;
    std::vector<std::uint32_t> own_;    ///< sorted, when exact
    std::vector<std::uint8_t> indices_; ///< by the upper five bits of each channel, else
};

} // namespace kelvo::media_tool
