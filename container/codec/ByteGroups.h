#pragma once
// Type 15: a sound record as groups of equal bytes and groups of literal bytes.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <cstddef>

namespace kelvo::codec {

/// Bytes that the groups of a record may take at most. (The costliest material, one lone byte
/// before every pair, takes four bytes for three; a record of one byte takes two.)
constexpr std::size_t LargestByteGroups(std::size_t record_length) {
    return 2 * record_length;
}

/// @param stream  at least LargestByteGroups(samples.size()) bytes, apart from the samples
/// @return bytes written
[[nodiscard]] std::size_t EncodeByteGroups(ByteView samples, ByteSpan stream);

/// @param samples  the record; from .written on left as it was
/// @return EndsEarly when the stream is cut or covers less than the record, TooLarge when it
/// describes
///         more.
Decoded DecodeByteGroups(ByteView stream, ByteSpan samples);

} // namespace kelvo::codec
