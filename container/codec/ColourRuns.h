#pragma once
// Types 1 to 4: a frame of 16-bit pixels, each frame by itself, as runs of equal pixels, directly
// or (2 and 4, and the key frames of 6 to 9) through an index of at most 256 colours.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo::codec {

inline constexpr std::size_t kPixelBytes = 2;
inline constexpr std::size_t kPaletteEntries = 256;
inline constexpr std::size_t kPaletteBytes = kPaletteEntries * kPixelBytes;

/// How often a value may repeat in one token; a longer run is cut into full tokens and a rest.
/// A two-byte count costs a byte in every token and pays only on flat drawings: hence both.
struct RunCount {
    std::size_t bytes;
    std::size_t longest;
};
inline constexpr RunCount kShortRuns{.bytes = 1, .longest = 255};
inline constexpr RunCount kLongRuns{.bytes = 2, .longest = 64000};

/// First byte of a stream with a colour index.
enum class IndexMode : std::uint8_t {
    Direct = 0,  ///< more than 256 colours: tokens hold the pixel itself
    Palette = 1, ///< 256 palette entries follow, tokens hold an entry's number
};

/// Scratch of the colour index: for each pixel value its palette number, or -1. Keeps nothing from
/// one call to the next.
using ColourMap = std::array<std::int16_t, 65536>;

/// The longest stream of EncodeRuns for a frame of `length` bytes.
constexpr std::size_t RunsWorstCase(std::size_t length, RunCount count) {
    return length / kPixelBytes * (kPixelBytes + count.bytes);
}
/// The longest stream of EncodeIndexedRuns for a frame of `length` bytes.
constexpr std::size_t IndexedRunsWorstCase(std::size_t length, RunCount count) {
    const std::size_t direct = RunsWorstCase(length, count);
    const std::size_t palette = kPaletteBytes + length / kPixelBytes * (1 + count.bytes);
    return 1 + (direct > palette ? direct : palette);
}

/// @param frame   16-bit pixels, little-endian; the last byte of an odd length is no pixel and not
/// coded
/// @param stream  at least RunsWorstCase bytes, or nothing is coded (0)
/// @return bytes of `stream` written
[[nodiscard]] std::size_t EncodeRuns(ByteView frame, ByteSpan stream, RunCount count);
/// @param frame  from .written on left as it was
/// @return EndsEarly when the stream describes fewer pixels than the frame has bytes for, TooLarge
/// when more. Half a token at the stream's end describes nothing.
[[nodiscard]] Decoded DecodeRuns(ByteView stream, ByteSpan frame, RunCount count);

/// As EncodeRuns, through a colour index where 256 colours suffice; palette entries that no pixel
/// uses are 0.
/// @param stream  at least IndexedRunsWorstCase bytes, or nothing is coded (0)
[[nodiscard]] std::size_t EncodeIndexedRuns(ByteView frame, ByteSpan stream, RunCount count,
                                            ColourMap& map);
/// As DecodeRuns. A palette that no token follows is an empty frame. BadValue, and nothing decoded:
/// a mode byte that means nothing.
[[nodiscard]] Decoded DecodeIndexedRuns(ByteView stream, ByteSpan frame, RunCount count);

/// The result of a decoder whose stream describes `described` bytes of `frame`.
constexpr Decoded DecodedPixels(std::uint64_t described, ByteSpan frame) {
    const std::uint64_t whole = frame.size();
    const std::uint64_t written = described < whole ? described : whole / kPixelBytes * kPixelBytes;
    const Fault fault = described < whole   ? Fault::EndsEarly
                        : described > whole ? Fault::TooLarge
                                            : Fault::None;
    return {static_cast<std::size_t>(written), fault, described};
}

} // namespace kelvo::codec
