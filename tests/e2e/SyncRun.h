#pragma once
// Plays a coded film in the real player from its beginning to its end, and compares what was seen
// with what was heard.

#include "tests/e2e/Player.h"
#include "tests/e2e/SyncMeasurement.h"

#include <string>
#include <vector>

namespace kelvo::test {

/// Audio frames and images a second at which films are made.
std::vector<CodedFilmPlan> SyncPlans();

struct SyncRun {
    std::string problem; ///< why there was nothing to compare
    std::vector<SeenImage> seen;
    std::vector<HeardFrame> heard;
    Agreement agreement;
};
SyncRun PlayCodedFilm(const Stage& stage, const CodedFilmPlan& plan);

} // namespace kelvo::test
