#pragma once
// Whether what stands behind each record makes sense: the numbers that tie images to the sound, and
// the capture times.

#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <optional>

namespace kelvo::tool {

/// Reads every side block of an open container, where the index says, without decoding anything. A
/// number that goes back, or that only some images have, is damage; sound that ends before the
/// picture and capture times that go back are only warned of.
/// @param audio_frames  of the sound that belongs to it; none: unknown
void CheckSideBlocks(const TrackReader& reader, std::optional<std::uint32_t> audio_frames,
                     Reporter& reporter);

} // namespace kelvo::tool
