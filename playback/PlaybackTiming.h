#pragma once
// Times that the playing thread's loops and their clock share.

#include "platform/base/types.h"

namespace kelvo {

/// No sleep of the playing thread is longer, so that a stop is noticed at once.
inline constexpr DWORD kLongestSleepMs = 10;
/// How far back a loop sets its last image at its start: the first one is then due at once.
inline constexpr DWORD kLongAgoMs = 99999;

} // namespace kelvo
