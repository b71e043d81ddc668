#pragma once
// Looks into the set-up packet of a Vorbis stream before the decoder does: a packet of a few
// hundred bytes may ask for tables of gigabytes, or send the decoder round in circles.

#include "framework/base/Bytes.h"

#include <cstdint>

namespace kelvo::vorbis_setup {

// Of all rates, channel counts and qualities of the common encoder, the set-up that asks for most
// has 19,413 entries and 85,928 values; its largest codebook has 6,561 entries.

/// Entries of all codebooks together.
inline constexpr std::uint64_t kMostEntries = 1U << 16U;
/// Entries of one: every residue may build a table of so many rows.
inline constexpr std::uint32_t kMostEntriesOfOne = 1U << 14U;
/// Values of all codebooks together: entries x dimensions, where a codebook has values.
inline constexpr std::uint64_t kMostValues = 1U << 19U;

/// What the codebooks of a set-up packet ask for.
struct CodebookTotals {
    bool readable = false; ///< false: the packet ends early, or a codebook is impossible
    std::uint64_t entries = 0;
    std::uint32_t largest = 0; ///< entries of the largest codebook
    std::uint64_t values = 0;
};

/// @param packet  the third packet of a stream, its 7 bytes of type and name included
CodebookTotals CountCodebooks(ByteView packet);

/// True when the tables that the packet asks for stay within the limits above.
bool TablesStaySmall(ByteView packet);

} // namespace kelvo::vorbis_setup
