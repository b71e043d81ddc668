#pragma once
// Which track may be coded in which type: only where the new file decodes to the same records, or
// to what the type is known to make of them.

#include "container/ContainerHeader.h"
#include "tools/kelvotool/film/FilmDescription.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelvo::tool {

/// The reason for which a track is refused a type; nothing when it may have it.
std::optional<std::string> WhyNotConvertible(const TrackDescription& track, int type);

/// The header that the track's own container has, or that a sound in Vorbis form would have.
ContainerHeader SourceHeader(const TrackDescription& track);

/// Types whose only key record is the first one need an interval beyond the last record.
/// @param given  what the person asked for
/// @return false when that would make records unreadable by their number
bool SettleKeyInterval(ContainerHeader& header, std::optional<std::uint32_t> given);

} // namespace kelvo::tool
