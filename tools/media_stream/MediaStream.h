#pragma once
// How kelvotool and kelvotool-media hand pictures and sound to each other through a pipe, so that
// the libraries of foreign formats stay in a program of their own. The bytes are written down here;
// which film or file they come from is each side's affair.
//
//   kelvotool-media encode OUT [options]   reads a stream from standard input, writes OUT
//   kelvotool-media decode IN  [options]   reads IN, writes a stream to standard output
//
// OUT is a full name that may be taken: kelvotool has asked about -f before. Options of encode:
//   --format mkv|mp4|webm|flac|gif  when OUT's extension is not to decide
//   --preset archive|share          lossless (the default), or small
//   --force                         OUT may be there already, and is replaced
// Options of decode:
//   --track audio|video             only this one; none: both
// Both end with kelvotool's exit codes and say what is wrong on standard error in its form,
// "kelvotool: FILE: what". encode writes OUT through a temporary beside it; a stream that stops
// without its End block leaves nothing behind and gives 2.
//
// A stream is a sequence of blocks, each of them a tag of four letters, the length of what follows
// (u32), and that many bytes. Every number is little-endian. The order is
//
//   "KMED"  version u32 = 1
//   "PICT"  at most one; none: a sound alone
//           width u32, height u32: above 0 and at most 32767
//           ticks_per_second: numerator u32, denominator u32, both above 0
//           significant_bits u32: 5 where the pictures came from 5-5-5 pixels, else 8
//           count u64: images that follow; 0 where nobody knows
//   "SOUN"  at most one; none: a picture alone
//           sample_rate u32 above 0, channels u32: 1 to 64
//           significant_bits u32: 8 where the samples came from bytes, else 16
//           count u64: samples (of one channel) that follow; 0 where nobody knows
//   "TEXT"  any number: a key, a byte 0, a value, both UTF-8 ("title", "software", "comment")
//   "DATA"  no bytes: the description ends here
//   then, in any order, an image not before the sound of the same time and neither a second ahead:
//   "IMAG"  start u64 in ticks, rising; duration u32 in ticks; then width x height x 3 bytes: red,
//           green, blue, the top row first, without filling
//   "SAMP"  any number of samples, signed 16 bits each, those of one moment side by side
//   "ENDS"  no bytes: all is there
//
// A 5-bit channel v stands in a byte as v << 3 | v >> 2, so that v is its upper five bits. A byte
// of sound b stands in 16 bits as (b - 127) x 256, and 255 as 32767.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo::media_stream {

inline constexpr std::uint32_t kVersion = 1;
inline constexpr std::uint32_t kLargestSide = 32767;
inline constexpr std::uint32_t kMostChannels = 64;
/// No block is longer; an image of the largest sides is refused instead.
inline constexpr std::uint32_t kLargestBlock = 1U << 30U;

/// The four letters as the number that they are in the stream.
constexpr std::uint32_t Tag(const char (&letters)[5]) {
    std::uint32_t tag = 0;
    for (std::size_t i = 4; i-- > 0;)
        tag = tag << 8U | static_cast<std::uint8_t>(letters[i]);
    return tag;
}
inline constexpr std::uint32_t kStart = Tag("KMED");
inline constexpr std::uint32_t kPicture = Tag("PICT");
inline constexpr std::uint32_t kSound = Tag("SOUN");
inline constexpr std::uint32_t kText = Tag("TEXT");
inline constexpr std::uint32_t kData = Tag("DATA");
inline constexpr std::uint32_t kImage = Tag("IMAG");
inline constexpr std::uint32_t kSamples = Tag("SAMP");
inline constexpr std::uint32_t kEnd = Tag("ENDS");

/// Tag and length, in front of every block.
struct BlockHead {
    static constexpr std::size_t kBytes = 8;
    std::uint32_t tag = 0;
    std::uint32_t length = 0;
};

struct PictureFormat {
    static constexpr std::size_t kBytes = 28;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t ticks_numerator = 0; ///< ticks a second, as a fraction
    std::uint32_t ticks_denominator = 1;
    std::uint32_t significant_bits = 8;
    std::uint64_t count = 0;

    std::uint64_t ImageBytes() const { return std::uint64_t{width} * height * 3; }
};

struct SoundFormat {
    static constexpr std::size_t kBytes = 20;
    std::uint32_t sample_rate = 0;
    std::uint32_t channels = 0;
    std::uint32_t significant_bits = 16;
    std::uint64_t count = 0;
};

/// In front of an image's bytes in its block.
struct ImageHead {
    static constexpr std::size_t kBytes = 12;
    std::uint64_t start = 0;
    std::uint32_t duration = 1;
};

std::array<std::uint8_t, BlockHead::kBytes> BytesOf(const BlockHead& head);
std::array<std::uint8_t, PictureFormat::kBytes> BytesOf(const PictureFormat& format);
std::array<std::uint8_t, SoundFormat::kBytes> BytesOf(const SoundFormat& format);
std::array<std::uint8_t, ImageHead::kBytes> BytesOf(const ImageHead& head);
/// @return EndsEarly, or TooLarge for a block that no writer makes
Result<BlockHead> ParseBlockHead(ByteView bytes);
/// @return EndsEarly, or BadValue for a format that nobody may take
Result<PictureFormat> ParsePicture(ByteView bytes);
/// The same of a sound.
Result<SoundFormat> ParseSound(ByteView bytes);
Result<ImageHead> ParseImageHead(ByteView bytes);

} // namespace kelvo::media_stream
