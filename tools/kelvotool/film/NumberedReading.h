#pragma once
// Reads the records of a track once more, by their numbers, and compares them with what they were
// when they were read in order.

#include "tools/kelvotool/film/RecordCoding.h"
#include "tools/kelvotool/film/TrackReader.h"

#include <span>

namespace kelvo::tool {

/// Reports every record that is another one. From the last to the first, so that nothing is where a
/// sequence would have left it; of long groups and of Vorbis sounds only some records.
/// @param fingerprints  of the records from the first on; those that are kNotComparable are left
/// @param jobs          threads, each with its own reader
void CompareByNumber(TrackReader& reader, std::span<const Fingerprint> fingerprints, unsigned jobs,
                     Reporter& reporter);

} // namespace kelvo::tool
