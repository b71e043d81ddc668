#pragma once
// One record as it lies in the file: the stored length, the stored payload, the side block, in one
// piece, so that it is written by one call.

#include "container/Compressionekel.h"
#include "container/ContainerHeader.h"
#include "framework/base/Bytes.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

inline constexpr std::size_t kStoredLengthBytes = 4;

/// True for the type whose records are raw and never reach the catalogue.
bool IsRaw(const ContainerHeader& header);

/// Bytes that the longest stored payload takes: what the catalogue may produce, and at least twice
/// the record, which old files were written with.
std::size_t PayloadRoom(const Compressionekel& catalogue, const ContainerHeader& header);

/// Bytes that any record's frame fits into.
std::size_t FrameRoom(const Compressionekel& catalogue, const ContainerHeader& header);

/// Codes one record, as a key record where the header's interval says so.
/// @param catalogue  set to the header's type
/// @param record     number that the record will have
/// @param payload    RecordLength bytes; may not lie in `frame`
/// @param frame      FrameRoom bytes
/// @return the part of `frame` that was filled; empty when the catalogue cannot code
ByteView EncodeFrame(Compressionekel& catalogue, const ContainerHeader& header,
                     std::uint32_t record, ByteView payload, ByteView side, ByteSpan frame);

/// The same for a replaced record: by the ordinary compressor, wherever the record stands.
ByteView EncodeReplacement(Compressionekel& catalogue, const ContainerHeader& header,
                           ByteView payload, ByteView side, ByteSpan frame);

/// A frame of a payload that is stored already.
/// @param frame  holds the payload behind the first kStoredLengthBytes
ByteView CloseFrame(std::size_t stored_length, ByteView side, ByteSpan frame);

} // namespace kelvo
