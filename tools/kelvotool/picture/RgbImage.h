#pragma once
// One image as every export and import sees it: 8-bit red, green and blue, the top row first,
// without filling; and the two ways between it and the pixels of a film.

#include "framework/base/Bytes.h"
#include "media/VideoHeader.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvo::tool {

struct RgbImage {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> bytes = {}; ///< width x height x 3

    void Resize(std::uint32_t new_width, std::uint32_t new_height) {
        width = new_width;
        height = new_height;
        bytes.resize(std::size_t{new_width} * new_height * 3);
    }
    std::uint8_t* Row(std::uint32_t y) { return bytes.data() + std::size_t{y} * width * 3; }
    const std::uint8_t* Row(std::uint32_t y) const {
        return bytes.data() + std::size_t{y} * width * 3;
    }
};

/// A 5-bit channel in 8 bits, as the player shows it: the upper bits once more below, so that white
/// is white and the 5 bits are the upper ones.
constexpr std::uint8_t ExpandChannel(unsigned five_bits) {
    return static_cast<std::uint8_t>(five_bits << 3U | five_bits >> 2U);
}
/// The 5-bit channel that is shown nearest to an 8-bit one; the inverse of ExpandChannel.
constexpr unsigned NearestChannel(std::uint8_t value) {
    return (value * 31U + 127U) / 255U;
}

/// The image that a decoded record holds. Nothing is allocated when it has this size already.
/// @param header  one that CheckVideoHeader accepts
/// @param record  missing pixels come out black
void TakeRecord(ByteView record, const VideoHeader& header, RgbImage& image);

/// How the pixels of a record are made of 8-bit channels.
enum class Dither : bool { No, Ordered };
/// The record that holds the image: rows from the bottom up, each filled up to 4 bytes with zeros.
/// @param bits_per_pixel  16 or 24
void MakeRecord(const RgbImage& image, unsigned bits_per_pixel, Dither dither,
                std::vector<std::uint8_t>& record);

/// Every pixel `times` wide and high.
void Enlarge(const RgbImage& image, std::uint32_t times, RgbImage& larger);
/// In another size, each pixel the mean of what it covers.
void Resample(const RgbImage& image, std::uint32_t width, std::uint32_t height, RgbImage& other);

} // namespace kelvo::tool
