#pragma once
// "cmprs", the general byte compressor that many types apply as their last stage: LZSS over a ring
// of 4096 bytes. A stream is groups of one flag byte and up to eight items, flags read from bit 0
// up: 1 = a literal byte, 0 = a match of two bytes (ring position and length). It has no header and
// no length field. What the bytes mean before and after this stage is the affair of the other
// codecs.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <cstddef>
#include <memory>

namespace kelvo::codec {

inline constexpr std::size_t kLzssRing = 4096;
inline constexpr std::size_t kLzssLongestMatch = 18;
inline constexpr std::size_t kLzssShortestMatch = 3;
/// Where in the ring the first byte of an input lands; everything before it is spaces.
inline constexpr std::size_t kLzssFirstPosition = kLzssRing - kLzssLongestMatch;
inline constexpr std::size_t kLzssItemsPerGroup = 8;
inline constexpr std::size_t kLzssMatchBytes = 2;

/// The longest stream that `length` bytes can become: all literals, a flag byte for every eight.
constexpr std::size_t LzssWorstCase(std::size_t length) {
    return length + (length + kLzssItemsPerGroup - 1) / kLzssItemsPerGroup;
}

/// Encodes byte strings, one after the other, each by itself. The object is only working memory
/// (about 160 KiB, made once); no string leaves a trace that changes the stream of the next.
class LzssEncoder {
public:
    LzssEncoder();
    ~LzssEncoder();
    LzssEncoder(const LzssEncoder&) = delete;
    LzssEncoder& operator=(const LzssEncoder&) = delete;

    /// The one stream of the reference binary-tree coder, byte for byte.
    /// @param stream  at least LzssWorstCase(input.size()) bytes, or nothing is coded (0)
    /// @return the bytes of `stream` that were written
    [[nodiscard]] std::size_t Encode(ByteView input, ByteSpan stream);

private:
    struct Working;
    std::unique_ptr<Working> working_;
};

/// Undoes Encode for any bytes whatever.
/// @param output  room for what is expected; bytes from .written on are left as they were
/// @return `.described` is what the stream stands for and `.written` as much of it as fitted.
///     TooLarge: it stands for more than there is room for; EndsEarly: it ends inside a match.
///     A stream that stands for less than `output` is no fault here: only the caller knows.
[[nodiscard]] Decoded DecodeLzss(ByteView stream, ByteSpan output);

} // namespace kelvo::codec
