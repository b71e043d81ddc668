#include "tools/kelvotool/picture/RgbImage.h"

#include "media/Pixel555.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace kelvo::tool {

namespace {

constexpr unsigned kShortPixel = 16;

/// The red, green and blue bytes of every 16-bit pixel.
constexpr std::array<std::uint8_t, 32> ExpandedChannels() {
    std::array<std::uint8_t, 32> table{};
    for (unsigned value = 0; value < table.size(); ++value)
        table[value] = ExpandChannel(value);
    return table;
}
constexpr auto kExpanded = ExpandedChannels();

static_assert([] {
    for (unsigned value = 0; value < 32; ++value)
        if (NearestChannel(ExpandChannel(value)) != value) return false;
    return true;
}());

void TakeShortRow(const std::uint8_t* in, std::uint8_t* out, std::uint32_t count) {
    for (std::uint32_t x = 0; x < count; ++x, in += 2, out += 3) {
        const unsigned pixel = in[0] | static_cast<unsigned>(in[1]) << 8U;
        out[0] = kExpanded[pixel >> 10U & 31U];
        out[1] = kExpanded[pixel >> 5U & 31U];
        out[2] = kExpanded[pixel & 31U];
    }
}

void SwapChannels(const std::uint8_t* in, std::uint8_t* out, std::uint32_t count) {
    for (std::uint32_t x = 0; x < count; ++x, in += 3, out += 3) {
        const std::array<std::uint8_t, 3> turned{in[2], in[1], in[0]};
        std::memcpy(out, turned.data(), turned.size());
    }
}

// Thresholds that no two neighbours share: an image that stands still stays still, so that
// differential types find nothing to store.
constexpr std::array<std::array<std::uint8_t, 8>, 8> kThresholds{
    {{0, 32, 8, 40, 2, 34, 10, 42},
     {48, 16, 56, 24, 50, 18, 58, 26},
     {12, 44, 4, 36, 14, 46, 6, 38},
     {60, 28, 52, 20, 62, 30, 54, 22},
     {3, 35, 11, 43, 1, 33, 9, 41},
     {51, 19, 59, 27, 49, 17, 57, 25},
     {15, 47, 7, 39, 13, 45, 5, 37},
     {63, 31, 55, 23, 61, 29, 53, 21}}};

unsigned Dithered(std::uint8_t value, unsigned threshold) {
    // What a channel lacks to the next 5-bit value decides how often it is rounded up.
    return (value * 31U * 64U + threshold * 255U + 127U) / (255U * 64U);
}

} // namespace

void TakeRecord(ByteView record, const VideoHeader& header, RgbImage& image) {
    const auto width = static_cast<std::uint32_t>(header.bitmap.biWidth);
    const auto height = static_cast<std::uint32_t>(header.bitmap.biHeight);
    const unsigned bits = header.bitmap.biBitCount;
    const std::uint64_t stride = pixel::RowStride(width, bits);
    image.Resize(width, height);
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::uint64_t start = stride * (height - 1 - y);
        std::uint8_t* const out = image.Row(y);
        const std::uint64_t there = start < record.size() ? record.size() - start : 0;
        const auto count =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(width, there / (bits / 8)));
        if (bits == kShortPixel) {
            TakeShortRow(record.data() + (count > 0 ? start : 0), out, count);
        } else {
            SwapChannels(record.data() + (count > 0 ? start : 0), out, count);
        }
        std::fill(out + std::size_t{count} * 3, out + std::size_t{width} * 3, std::uint8_t{0});
    }
}

void MakeRecord(const RgbImage& image, unsigned bits_per_pixel, Dither dither,
                std::vector<std::uint8_t>& record) {
    const std::uint64_t stride = pixel::RowStride(image.width, bits_per_pixel);
    record.assign(stride * image.height, 0);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const std::uint8_t* in = image.Row(y);
        std::uint8_t* out = record.data() + stride * (image.height - 1 - y);
        if (bits_per_pixel != kShortPixel) {
            SwapChannels(in, out, image.width);
            continue;
        }
        for (std::uint32_t x = 0; x < image.width; ++x, in += 3, out += 2) {
            const unsigned threshold = kThresholds[y % 8][x % 8];
            const auto channel = [&](std::uint8_t value) {
                return dither == Dither::Ordered ? Dithered(value, threshold)
                                                 : NearestChannel(value);
            };
            const unsigned pixel = channel(in[0]) << 10U | channel(in[1]) << 5U | channel(in[2]);
            out[0] = static_cast<std::uint8_t>(pixel);
            out[1] = static_cast<std::uint8_t>(pixel >> 8U);
        }
    }
}

void Enlarge(const RgbImage& image, std::uint32_t times, RgbImage& larger) {
    larger.Resize(image.width * times, image.height * times);
    const std::size_t row_bytes = std::size_t{larger.width} * 3;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const std::uint8_t* in = image.Row(y);
        std::uint8_t* out = larger.Row(y * times);
        for (std::uint32_t x = 0; x < image.width; ++x, in += 3) {
            for (std::uint32_t copy = 0; copy < times; ++copy, out += 3)
                std::memcpy(out, in, 3);
        }
        for (std::uint32_t copy = 1; copy < times; ++copy)
            std::memcpy(larger.Row(y * times + copy), larger.Row(y * times), row_bytes);
    }
}

void Resample(const RgbImage& image, std::uint32_t width, std::uint32_t height, RgbImage& other) {
    other.Resize(width, height);
    for (std::uint32_t y = 0; y < height; ++y) {
        const auto top = static_cast<std::uint32_t>(std::uint64_t{y} * image.height / height);
        const auto bottom = std::max<std::uint32_t>(
            top + 1, static_cast<std::uint32_t>(std::uint64_t{y + 1} * image.height / height));
        std::uint8_t* out = other.Row(y);
        for (std::uint32_t x = 0; x < width; ++x, out += 3) {
            const auto left = static_cast<std::uint32_t>(std::uint64_t{x} * image.width / width);
            const auto right = std::max<std::uint32_t>(
                left + 1, static_cast<std::uint32_t>(std::uint64_t{x + 1} * image.width / width));
            std::array<std::uint64_t, 3> sum{};
            for (std::uint32_t from_y = top; from_y < bottom; ++from_y) {
                const std::uint8_t* in = image.Row(from_y) + std::size_t{left} * 3;
                for (std::uint32_t from_x = left; from_x < right; ++from_x, in += 3)
                    for (std::size_t channel = 0; channel < 3; ++channel)
                        sum[channel] += in[channel];
            }
            const std::uint64_t count = std::uint64_t{bottom - top} * (right - left);
            for (std::size_t channel = 0; channel < 3; ++channel)
                out[channel] = static_cast<std::uint8_t>((sum[channel] + count / 2) / count);
        }
    }
}

} // namespace kelvo::tool
