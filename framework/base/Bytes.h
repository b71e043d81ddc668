#pragma once
// Views of raw bytes: what codecs and parsers take and give instead of a pointer and a length.

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo {

using ByteView = std::span<const std::uint8_t>; ///< bytes that are read
using ByteSpan = std::span<std::uint8_t>;       ///< bytes that are written

} // namespace kelvo
