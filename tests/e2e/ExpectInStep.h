#pragma once
// What tests expect of a measurement of picture against sound. The bounds are wide, since nobody
// knows what else the machine does; measure_sync has the strict ones.

#include "tests/e2e/StageForTests.h"
#include "tests/e2e/SyncMeasurement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

namespace kelvo::test {

inline constexpr double kMedianMs = kSanitized ? 60 : 15;
inline constexpr double kNearMs = kSanitized ? 200 : 40;
inline constexpr double kShareNear = 0.95;

/// A busy machine tears a single measurement; a wrong clock spoils every one.
inline constexpr int kAttempts = 3;

/// What keeps a measurement from being good; empty when nothing does.
inline std::string FaultOf(const Agreement& agreement, std::size_t at_least) {
    std::printf("            %s\n", agreement.Text().c_str());
    const bool enough = agreement.late_ms.size() >= at_least;
    const bool in_step =
        std::fabs(agreement.Median()) <= kMedianMs && agreement.ShareWithin(kNearMs) >= kShareNear;
    const bool complete = kSanitized || agreement.missed <= static_cast<int>(at_least / 50);
    if (enough && in_step && complete) return {};
    return agreement.Text() + agreement.Outside(kNearMs);
}

/// @param measure  plays a film and compares; gives what went wrong before there was anything to
///                 compare, or nothing
inline void ExpectInStep(std::size_t at_least,
                         const std::function<std::string(Agreement&)>& measure) {
    std::string fault;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        Agreement agreement;
        fault = measure(agreement);
        if (fault.empty()) fault = FaultOf(agreement, at_least);
        if (fault.empty()) return;
        std::printf("            not good enough: %s\n", fault.c_str());
    }
    ADD_FAILURE() << "in none of " << kAttempts << " runs; the last one: " << fault;
}

} // namespace kelvo::test
