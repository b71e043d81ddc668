#pragma once
// Types 5 to 8: a frame of 16-bit pixels as the difference to the frame before it, from key frames
// on. Streams are 16-bit words, little-endian; word 0 is the frame's kind. The encoders keep the
// frame before in a buffer of the caller's; the decoders find it in the very frame that they write,
// and touch only the pixels that changed.

#include "container/codec/ColourRuns.h"
#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <cstddef>
#include <cstdint>

namespace kelvo::codec {

/// Word 0 of a stream.
enum class FrameKind : std::uint16_t {
    Key = 0,        ///< the frame by itself
    Difference = 1, ///< what changed since the frame before
};

/// Type 5: words above 0 skip that many pixels, a 0 is followed by one new pixel.
struct PixelDifference {
    static constexpr std::size_t kLongestSkip = 64000;
};
/// Types 6 to 8: the ranges of a group's first word.
struct GroupDifference {
    static constexpr std::size_t kLongestSkip = 50000; ///< a word up to this skips as many pixels
    static constexpr std::size_t kRepeatBase = 50000;  ///< above: one pixel, word - base times
    static constexpr std::size_t kLongestRepeat = 5000;
    static constexpr std::size_t kLiteralBase = 55000; ///< above: word - base pixels in order
    static constexpr std::size_t kLongestLiteral = 10000;
};
static_assert(GroupDifference::kRepeatBase + GroupDifference::kLongestRepeat ==
              GroupDifference::kLiteralBase);
static_assert(GroupDifference::kLiteralBase + GroupDifference::kLongestLiteral <= 65535);

/// Whether a frame is coded by itself or against the one before.
enum class CodeAs : std::uint8_t { Key, Difference };

/// The longest streams for a frame of `length` bytes, key frames included.
constexpr std::size_t
PixelDifferenceWorstCase(std::size_t length) { // every pixel changed: 0, pixel
    return 2 + length / kPixelBytes * 4 + length % kPixelBytes;
}
constexpr std::size_t GroupDifferenceWorstCase(std::size_t length) {
    // Every other pixel changed costs a header, a pixel and a skip for two pixels.
    const std::size_t pixels = length / kPixelBytes;
    const std::size_t difference = 2 * (pixels + (pixels + 1) / 2 + 1);
    const std::size_t key = IndexedRunsWorstCase(length, kShortRuns);
    return 2 + (key > difference ? key : difference);
}

/// Type 5. A key frame is stored raw.
/// @param previous  as long as `frame`; read for a difference, equal to `frame` afterwards
/// @param stream    at least PixelDifferenceWorstCase bytes, or nothing is coded (0)
/// @return bytes of `stream` written
[[nodiscard]] std::size_t EncodePixelDifference(ByteView frame, ByteSpan previous, ByteSpan stream,
                                                CodeAs kind);
/// @param frame  holds the frame before
/// @return `.described` counts the bytes of all pixels that the stream covers, skipped ones
/// included. EndsEarly when it covers less than the frame, TooLarge when more; BadValue, and
/// nothing decoded, for a kind that means nothing.
[[nodiscard]] Decoded DecodePixelDifference(ByteView stream, ByteSpan frame);

/// Types 6 and 7 (and the first stage of 8). A key frame is a stream of indexed short runs.
/// @param stream  at least GroupDifferenceWorstCase bytes, or nothing is coded (0)
[[nodiscard]] std::size_t EncodeGroupDifference(ByteView frame, ByteSpan previous, ByteSpan stream,
                                                CodeAs kind, ColourMap& map);
/// As DecodePixelDifference.
[[nodiscard]] Decoded DecodeGroupDifference(ByteView stream, ByteSpan frame);

} // namespace kelvo::codec
