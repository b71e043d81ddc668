#pragma once
// The lossless difference forms of a sound record: each sample as its distance from the one before
// (type 16), and those distances packed in nibbles (type 18). The cmprs stage around them is the
// catalogue's affair.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <cstddef>

namespace kelvo::codec {

/// A difference byte of 127 stands for "no change"; the first one is the first sample itself.
/// @param differences  samples.size() bytes, apart from the samples
void EncodeDifferences(ByteView samples, ByteSpan differences);

/// @param samples  at least differences.size() bytes; may be the very bytes of the differences
void DecodeDifferences(ByteView differences, ByteSpan samples);

/// Bytes that the nibbles of a record may take at most: an escape nibble in a byte of its own and
/// the value byte, for every sample.
constexpr std::size_t LargestNibbles(std::size_t record_length) {
    return 2 * record_length;
}

/// @param differences  as EncodeDifferences makes them
/// @param packed       at least LargestNibbles(differences.size()) bytes, apart from the
/// differences
/// @return bytes written
[[nodiscard]] std::size_t PackNibbles(ByteView differences, ByteSpan packed);

/// Unpacks nibbles and sums them up to samples in one go.
/// @param samples  the record, apart from the nibbles; from .written on left as it was
/// @return EndsEarly when the nibbles are cut or cover less than the record, TooLarge when they
/// describe
///         more.
Decoded UnpackNibblesToSamples(ByteView packed, ByteSpan samples);

} // namespace kelvo::codec
