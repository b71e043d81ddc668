#pragma once
// The picture of a sound: for every column how far its samples go up and down.

#include "framework/base/Bytes.h"
#include "tools/kelvotool/picture/RgbImage.h"

#include <cstdint>
#include <vector>

namespace kelvo::tool {

class Waveform {
public:
    /// @param columns  of the picture
    /// @param samples  that will be added altogether
    Waveform(std::uint32_t columns, std::uint64_t samples);
    /// @param samples  of 16 bits each
    void Add(ByteView samples);
    /// Draws it over the whole image.
    void Draw(RgbImage& image) const;

private:
    struct Column {
        std::int16_t lowest = 0;
        std::int16_t highest = 0;
    };
    std::vector<Column> columns_;
    std::uint64_t total_;
    std::uint64_t added_ = 0;
};

} // namespace kelvo::tool
