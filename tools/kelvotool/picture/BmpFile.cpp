#include "tools/kelvotool/picture/BmpFile.h"

#include "framework/base/ByteReader.h"
#include "media/Pixel555.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>

namespace kelvo::tool {

namespace {

constexpr std::uint16_t kLetters = 0x4D42; // BM
constexpr std::size_t kFileHeader = 14;
constexpr std::uint32_t kCoreHeader = 12;
constexpr std::uint32_t kInfoHeader = 40;
constexpr std::uint32_t kLargestHeader = 256;
constexpr std::uint32_t kPlain = 0;
constexpr std::uint32_t kMasks = 3;

struct Layout {
    std::uint32_t pixel_offset = 0;
    std::uint32_t header_size = 0;
    std::int64_t width = 0;
    std::int64_t height = 0; // below 0: from the top down
    unsigned bits = 0;
    std::uint32_t compression = kPlain;
    std::uint32_t colours = 0;
    std::array<std::uint32_t, 3> masks{0x7C00, 0x03E0, 0x001F};
};

Result<Layout> ReadLayout(ByteView file) {
    ByteReader reader{file};
    Layout layout;
    const bool is_bmp = reader.ReadU16() == kLetters;
    reader.Skip(8);
    layout.pixel_offset = reader.ReadU32();
    layout.header_size = reader.ReadU32();
    const bool is_core = layout.header_size == kCoreHeader;
    if (is_core) {
        layout.width = reader.ReadU16();
        layout.height = reader.ReadU16();
    } else {
        layout.width = static_cast<std::int32_t>(reader.ReadU32());
        layout.height = static_cast<std::int32_t>(reader.ReadU32());
    }
    reader.Skip(2);
    layout.bits = reader.ReadU16();
    if (!is_core) {
        layout.compression = reader.ReadU32();
        reader.Skip(12);
        layout.colours = reader.ReadU32();
        reader.Skip(4);
    }
    if (layout.bits == 32) layout.masks = {0x00FF0000, 0x0000FF00, 0x000000FF};
    if (layout.compression == kMasks) {
        for (std::uint32_t& mask : layout.masks)
            mask = reader.ReadU32();
    }
    if (!reader.Ok()) return Error{Fault::EndsEarly, file.size()};
    const bool knows_header =
        is_core || (layout.header_size >= kInfoHeader && layout.header_size <= kLargestHeader);
    const bool takes_masks = layout.bits == 16 || layout.bits == 32;
    const bool knows_coding =
        layout.compression == kPlain || (layout.compression == kMasks && takes_masks);
    if (!is_bmp || !knows_header || !knows_coding) return Error{Fault::BadValue, 0};
    return layout;
}

/// A channel of a masked pixel in 8 bits.
std::uint8_t Channel(std::uint32_t pixel, std::uint32_t mask) {
    if (mask == 0) return 0;
    const auto shift = static_cast<unsigned>(std::countr_zero(mask));
    const std::uint64_t largest = mask >> shift;
    const std::uint64_t value = (pixel & mask) >> shift;
    if (largest == 31) return ExpandChannel(static_cast<unsigned>(value));
    return static_cast<std::uint8_t>((value * 255 + largest / 2) / largest);
}

using Palette = std::vector<std::array<std::uint8_t, 3>>;

Palette ReadPalette(ByteView file, const Layout& layout) {
    Palette palette;
    if (layout.bits > 8) return palette;
    const bool is_core = layout.header_size == kCoreHeader;
    const std::uint32_t largest = 1U << layout.bits;
    const std::uint32_t count = layout.colours == 0 ? largest : std::min(layout.colours, largest);
    ByteReader reader{file};
    reader.Seek(kFileHeader + layout.header_size);
    palette.resize(largest);
    for (std::uint32_t i = 0; i < count && reader.Ok(); ++i) {
        const std::uint8_t blue = reader.ReadU8();
        const std::uint8_t green = reader.ReadU8();
        palette[i] = {reader.ReadU8(), green, blue};
        if (!is_core) reader.Skip(1);
    }
    return palette;
}

void ReadRow(const std::uint8_t* row, const Layout& layout, const Palette& palette,
             std::uint8_t* out) {
    for (std::size_t x = 0; x < static_cast<std::size_t>(layout.width); ++x, out += 3) {
        if (layout.bits <= 8) {
            const unsigned per_byte = 8 / layout.bits;
            const unsigned shift = 8 - layout.bits * static_cast<unsigned>(x % per_byte + 1);
            const unsigned index = row[x / per_byte] >> shift & ((1U << layout.bits) - 1);
            std::ranges::copy(palette[index], out);
        } else if (layout.bits == 24) {
            out[0] = row[3 * x + 2];
            out[1] = row[3 * x + 1];
            out[2] = row[3 * x];
        } else {
            std::uint32_t pixel = 0;
            for (std::size_t i = layout.bits / 8; i-- > 0;)
                pixel = pixel << 8U | row[x * (layout.bits / 8) + i];
            for (std::size_t channel = 0; channel < 3; ++channel)
                out[channel] = Channel(pixel, layout.masks[channel]);
        }
    }
}

} // namespace

void EncodeBmp(const RgbImage& image, unsigned bits_per_pixel, std::vector<std::uint8_t>& file) {
    std::vector<std::uint8_t> record;
    MakeRecord(image, bits_per_pixel, Dither::No, record);
    file = BuildBitmapHeaders(static_cast<std::int32_t>(image.width),
                              static_cast<std::int32_t>(image.height),
                              static_cast<std::uint16_t>(bits_per_pixel));
    file.insert(file.end(), record.begin(), record.end());
}

Result<ReadPicture> DecodeBmp(ByteView file, std::uint32_t largest_side) {
    const auto found = ReadLayout(file);
    if (!found) return found.Why();
    const Layout& layout = found.Value();
    constexpr std::array<unsigned, 6> kBits{1, 4, 8, 16, 24, 32};
    if (std::ranges::find(kBits, layout.bits) == kBits.end() || layout.width <= 0 ||
        layout.height == 0) {
        return Error{Fault::BadValue, kFileHeader};
    }
    const std::int64_t height = std::abs(layout.height);
    if (layout.width > largest_side || height > largest_side) {
        return Error{Fault::TooLarge, kFileHeader};
    }
    const std::uint64_t stride =
        pixel::RowStride(static_cast<std::uint32_t>(layout.width), layout.bits);
    if (layout.pixel_offset > file.size() ||
        stride * static_cast<std::uint64_t>(height) > file.size() - layout.pixel_offset) {
        return Error{Fault::EndsEarly, file.size()};
    }
    const Palette palette = ReadPalette(file, layout);
    ReadPicture picture;
    picture.image.Resize(static_cast<std::uint32_t>(layout.width),
                         static_cast<std::uint32_t>(height));
    for (std::uint32_t y = 0; y < picture.image.height; ++y) {
        const std::uint32_t stored = layout.height > 0 ? picture.image.height - 1 - y : y;
        ReadRow(file.data() + layout.pixel_offset + stride * stored, layout, palette,
                picture.image.Row(y));
    }
    picture.has_five_bits = layout.bits == 16 && layout.masks[1] == 0x03E0;
    return picture;
}

} // namespace kelvo::tool
