#pragma once
// Which type that loses nothing makes a track smallest: tried on its own records.

#include "framework/base/Result.h"
#include "tools/kelvotool/film/TrackReader.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo::tool {

/// How a type did.
struct TypeTrial {
    int type = 0;
    std::uint64_t bytes = 0; ///< stored, of the records that were tried
};

struct BestType {
    int type = 0;
    std::uint32_t records_tried = 0;
    bool is_sample = false;
    std::vector<TypeTrial> trials = {}; ///< the smallest first
};

/// Codes the track, or records from all over a large one, in every type that it may have and that
/// loses nothing. Of equally small ones it takes the one that is easiest to edit and to jump in.
/// @param key_interval  of types 7 and 8; none: the track's own
/// @return Stopped, or why the records cannot be read
Result<BestType> FindBestType(const TrackReader& reader, std::optional<std::uint32_t> key_interval,
                              unsigned jobs);

} // namespace kelvo::tool
