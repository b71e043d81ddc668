#pragma once
// Compares the index of an open container with the records themselves.

#include "tools/kelvotool/Reporter.h"
#include "tools/kelvotool/TrackReader.h"

namespace kelvo::tool {

/// Reports every record that does not lie where the index says, or is not as long.
/// @return true when index and records agree
bool CheckIndex(const TrackReader& reader, Reporter& reporter);

} // namespace kelvo::tool
