#include "platform/desktop/Dib.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>

namespace kelvo::desktop {

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000U;
constexpr std::array kBitCounts{1, 4, 8, 16, 24, 32};
// The longest header in use; a length beyond is a damaged one, and where it says that the palette
// lies there is nothing.
constexpr std::size_t kLongestHeader = 124;
constexpr std::size_t kPixelsTogether = 8; ///< in the vectors that every 64-bit processor has

/// What a header of either kind says.
struct Header {
    std::size_t length = 0; ///< of the header; the palette follows
    std::int64_t width = 0;
    std::int64_t height = 0; ///< negative: top-down
    int bit_count = 0;
    DWORD compression = BI_RGB;
    DWORD colours_used = 0;
    std::size_t palette_entry = sizeof(RGBQUAD);
};

// Reads the fields one by one: in a packed block they may lie at any address.
template <class Field>
Field ReadAt(const std::uint8_t* header, std::size_t offset) {
    Field field;
    std::memcpy(&field, header + offset, sizeof(Field));
    return field;
}

Header ReadHeader(const std::uint8_t* bytes) {
    Header header;
    header.length = ReadAt<DWORD>(bytes, 0);
    if (header.length == sizeof(BITMAPCOREHEADER)) {
        header.width = ReadAt<WORD>(bytes, offsetof(BITMAPCOREHEADER, bcWidth));
        header.height = ReadAt<WORD>(bytes, offsetof(BITMAPCOREHEADER, bcHeight));
        header.bit_count = ReadAt<WORD>(bytes, offsetof(BITMAPCOREHEADER, bcBitCount));
        header.palette_entry = sizeof(RGBTRIPLE);
    } else if (header.length >= sizeof(BITMAPINFOHEADER)) {
        header.width = ReadAt<LONG>(bytes, offsetof(BITMAPINFOHEADER, biWidth));
        header.height = ReadAt<LONG>(bytes, offsetof(BITMAPINFOHEADER, biHeight));
        header.bit_count = ReadAt<WORD>(bytes, offsetof(BITMAPINFOHEADER, biBitCount));
        header.compression = ReadAt<DWORD>(bytes, offsetof(BITMAPINFOHEADER, biCompression));
        header.colours_used = ReadAt<DWORD>(bytes, offsetof(BITMAPINFOHEADER, biClrUsed));
    }
    return header;
}

bool CanBeDrawn(const Header& header) {
    return header.length <= kLongestHeader && header.compression == BI_RGB && header.width > 0 &&
           header.width <= INT_MAX / 32 && header.height != 0 && header.height > -INT_MAX &&
           std::ranges::find(kBitCounts, header.bit_count) != kBitCounts.end();
}

// How many entries stand behind the header; a true-colour picture may have some, too.
std::size_t PaletteEntries(const Header& header) {
    if (header.colours_used != 0 || header.bit_count > 8) return header.colours_used;
    return std::size_t{1} << static_cast<unsigned>(header.bit_count);
}

void ReadPalette(const Header& header, const std::uint8_t* entries, DibView& view) {
    view.palette.fill(kOpaque);
    if (header.bit_count > 8) return;
    const std::size_t possible = std::size_t{1} << static_cast<unsigned>(header.bit_count);
    const std::size_t count = std::min(PaletteEntries(header), possible);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* entry = entries + i * header.palette_entry;
        view.palette[i] = kOpaque | static_cast<std::uint32_t>(entry[2]) << 16U |
                          static_cast<std::uint32_t>(entry[1]) << 8U | entry[0];
    }
}

DibView ViewFrom(const Header& header, const std::uint8_t* entries, const std::uint8_t* bits) {
    DibView view;
    view.width = static_cast<int>(header.width);
    view.height = static_cast<int>(header.height < 0 ? -header.height : header.height);
    view.top_down = header.height < 0;
    view.bit_count = header.bit_count;
    view.stride =
        (static_cast<std::size_t>(header.width) * static_cast<std::size_t>(header.bit_count) + 31) /
        32 * 4;
    view.bits = bits;
    ReadPalette(header, entries, view);
    return view;
}

using EightWords [[gnu::vector_size(kPixelsTogether * 2)]] = std::uint16_t;
static_assert(std::endian::native == std::endian::little, "pixels and words are stored low first");

/// The lower half of 0xffRRGGBB, green and blue, of one 5-5-5 pixel or of several side by side.
/// Each channel's upper bits are repeated below, so that white stays white.
template <class Words>
constexpr Words GreenBlueOf555(Words pixels) {
    const Words upper = (pixels & 0x03E0) << 6 | (pixels & 0x001F) << 3;
    return upper | (upper >> 5 & 0x0707);
}
/// The upper half, 0xff and red.
template <class Words>
constexpr Words RedOf555(Words pixels) {
    const Words upper = (pixels & 0x7C00) >> 7;
    return upper | upper >> 5 | 0xFF00;
}
constexpr std::uint32_t Expand555(std::uint32_t pixel) {
    return RedOf555(pixel) << 16U | GreenBlueOf555(pixel);
}
static_assert(Expand555(0x7FFFU) == 0xFFFFFFFFU && Expand555(0x8000U) == kOpaque);
static_assert(Expand555(0x4210U) == 0xFF848484U);

// Arithmetic, because a table of all pixels takes 128 KiB and pushes the picture from the cache.
void Expand16(const std::uint8_t* in, std::size_t count, std::uint32_t* out) {
    for (; count >= kPixelsTogether;
         count -= kPixelsTogether, in += sizeof(EightWords), out += kPixelsTogether) {
        EightWords words;
        std::memcpy(&words, in, sizeof(words));
        const EightWords low = GreenBlueOf555(words);
        const EightWords high = RedOf555(words);
        const EightWords pixels[2] = {
            __builtin_shufflevector(low, high, 0, 8, 1, 9, 2, 10, 3, 11),
            __builtin_shufflevector(low, high, 4, 12, 5, 13, 6, 14, 7, 15),
        };
        std::memcpy(out, pixels, sizeof(pixels));
    }
    for (; count > 0; --count, in += sizeof(std::uint16_t), ++out) {
        *out = Expand555(std::uint32_t{ReadAt<std::uint16_t>(in, 0)});
    }
}

void Expand24(const std::uint8_t* in, std::size_t count, std::uint32_t* out) {
    for (std::size_t i = 0; i < count; ++i, in += 3) {
        out[i] = kOpaque | static_cast<std::uint32_t>(in[2]) << 16U |
                 static_cast<std::uint32_t>(in[1]) << 8U | in[0];
    }
}

void Expand32(const std::uint8_t* in, std::size_t count, std::uint32_t* out) {
    std::memcpy(out, in, count * sizeof(std::uint32_t));
    for (std::size_t i = 0; i < count; ++i)
        out[i] |= kOpaque;
}

// The leftmost pixel stands in the highest bits of a byte.
void ExpandIndexed(const DibView& dib, const std::uint8_t* row, int first, int count,
                   std::uint32_t* out) {
    const auto bits = static_cast<std::size_t>(dib.bit_count);
    const std::size_t in_byte = 8 / bits;
    const std::size_t mask = (std::size_t{1} << bits) - 1;
    for (int i = 0; i < count; ++i) {
        const auto x = static_cast<std::size_t>(first + i);
        const std::size_t shift = (in_byte - 1 - x % in_byte) * bits;
        out[i] = dib.palette[(std::size_t{row[x / in_byte]} >> shift) & mask];
    }
}

} // namespace

std::optional<DibView> ViewDib(const BITMAPINFO* info, const void* bits) {
    if (info == nullptr || bits == nullptr) return std::nullopt;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(info);
    const Header header = ReadHeader(bytes);
    if (!CanBeDrawn(header)) return std::nullopt;
    return ViewFrom(header, bytes + header.length, static_cast<const std::uint8_t*>(bits));
}

std::optional<DibView> ViewPackedDib(std::span<const std::uint8_t> block) {
    if (block.size() < sizeof(DWORD)) return std::nullopt;
    const std::size_t claimed = ReadAt<DWORD>(block.data(), 0);
    const std::size_t needed = std::min(claimed, sizeof(BITMAPINFOHEADER));
    if (needed > block.size()) return std::nullopt;
    const Header header = ReadHeader(block.data());
    if (!CanBeDrawn(header) || header.length > block.size()) return std::nullopt;
    const std::size_t palette_length = PaletteEntries(header) * header.palette_entry;
    const std::size_t behind_header = block.size() - header.length;
    if (palette_length > behind_header) return std::nullopt;
    const std::uint8_t* entries = block.data() + header.length;
    const DibView view = ViewFrom(header, entries, entries + palette_length);
    const std::size_t rows_there = (behind_header - palette_length) / view.stride;
    if (static_cast<std::size_t>(view.height) > rows_there) return std::nullopt;
    return view;
}

void ExpandPixels(const DibView& dib, const std::uint8_t* row, int first, int count,
                  std::uint32_t* out) {
    const auto start = static_cast<std::size_t>(first);
    const auto length = static_cast<std::size_t>(count);
    switch (dib.bit_count) {
    case 16:
        return Expand16(row + start * 2, length, out);
    case 24:
        return Expand24(row + start * 3, length, out);
    case 32:
        return Expand32(row + start * 4, length, out);
    default:
        return ExpandIndexed(dib, row, first, count, out);
    }
}

} // namespace kelvo::desktop
