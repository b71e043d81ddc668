#pragma once
// Words of memory at any address, as the codecs compare and copy them: in place of bytes or pixels
// one by one. The callers vouch that the bytes are there.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kelvo::codec {

inline std::uint64_t LoadWord(const std::uint8_t* from) {
    std::uint64_t word = 0;
    std::memcpy(&word, from, sizeof word);
    return word;
}
/// The first byte is the lowest.
inline std::uint64_t LoadLittleWord(const std::uint8_t* from) {
    const std::uint64_t word = LoadWord(from);
    return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}
/// The first byte is the highest, so that words compare as their bytes do.
inline std::uint64_t LoadBigWord(const std::uint8_t* from) {
    const std::uint64_t word = LoadWord(from);
    return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}
inline void StoreLittleWord(std::uint8_t* to, std::uint64_t word) {
    if constexpr (std::endian::native != std::endian::little) word = __builtin_bswap64(word);
    std::memcpy(to, &word, sizeof word);
}

inline constexpr std::size_t kPixelsPerWord = 4;
/// Up to so many pixels are copied here, more by the library.
inline constexpr std::size_t kFewPixels = 32;

/// A pixel or any other 16-bit word of a stream, little-endian.
inline std::uint16_t LoadPixel(const std::uint8_t* from) {
    return static_cast<std::uint16_t>(from[0] | (from[1] << 8U));
}
inline void StorePixel(std::uint8_t* to, std::uint32_t pixel) {
    to[0] = static_cast<std::uint8_t>(pixel);
    to[1] = static_cast<std::uint8_t>(pixel >> 8U);
}

/// Writes `count` equal pixels and nothing beyond them.
inline void FillPixels(std::uint8_t* to, std::uint16_t pixel, std::size_t count) {
    if (count < kPixelsPerWord) {
        if (count == 0) return;
        StorePixel(to, pixel);
        StorePixel(to + 2 * (count >> 1U), pixel);
        StorePixel(to + 2 * (count - 1), pixel);
        return;
    }
    const std::uint64_t word = 0x0001000100010001U * pixel;
    std::uint8_t* const last = to + 2 * (count - kPixelsPerWord);
    for (; to < last; to += sizeof word) {
        StoreLittleWord(to, word);
    }
    StoreLittleWord(last, word); // overlaps the one before where the count asks for it
}

/// Copies `count` pixels and writes nothing beyond them; most counts in a picture are small.
inline void CopyPixels(std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
    if (count > kFewPixels) {
        std::memcpy(to, from, 2 * count);
    } else if (count >= kPixelsPerWord) {
        const std::size_t last = 2 * (count - kPixelsPerWord);
        for (std::size_t at = 0; at < last; at += sizeof(std::uint64_t)) {
            StoreLittleWord(to + at, LoadLittleWord(from + at));
        }
        StoreLittleWord(to + last, LoadLittleWord(from + last));
    } else if (count > 0) {
        std::memcpy(to, from, 2);
        std::memcpy(to + 2 * (count >> 1U), from + 2 * (count >> 1U), 2);
        std::memcpy(to + 2 * (count - 1), from + 2 * (count - 1), 2);
    }
}

} // namespace kelvo::codec
