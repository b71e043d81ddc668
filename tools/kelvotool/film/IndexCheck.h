#pragma once
// Compares the index of an open container with the records themselves.

#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/report/Reporter.h"

namespace kelvo::tool {

/// Reports every record that does not lie where the index says, or is not as long.
/// @return true when index and records agree
bool CheckIndex(const TrackReader& reader, Reporter& reporter);

} // namespace kelvo::tool
