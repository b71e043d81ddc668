#pragma once
// The sound of the demo film: silence, and a bell that strikes at every full second, to the sample.

#include "framework/base/Bytes.h"

#include <cstdint>

namespace kelvo::demo {

inline constexpr std::uint32_t kSampleRate = 44100;

/// Samples from number `first` of the film on.
/// @param pcm  16-bit samples, low byte first
void StrikeBell(std::uint64_t first, ByteSpan pcm);

} // namespace kelvo::demo
