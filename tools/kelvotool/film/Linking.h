#pragma once
// Ties a picture to a sound: the number of the audio frame that each image is shown with.

#include "framework/base/Result.h"
#include "media/SyncNumbers.h"
#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <optional>

namespace kelvo {
class RewriteTarget;
}

namespace kelvo::tool {

/// The rule that ties the two tracks; nothing after it was reported that there is none.
/// @param offset  whole images between picture and sound
std::optional<SyncLink> LinkFor(const TrackDescription& video, const TrackDescription& audio,
                                int offset, Reporter& reporter);

/// The audio frame that the record which was read last names.
std::uint32_t SyncNumberOf(const TrackReader& video);

/// Writes the picture's container once more, its records as they are stored, with the numbers of
/// the link. What is damaged is reported and copied.
Error WriteLinked(RewriteTarget& target, TrackReader& video, const SyncLink& link,
                  Reporter& reporter);

} // namespace kelvo::tool
