#pragma once
// The colours of the desktop's theme behind GetSysColor, readable from any thread.

#include "platform/base/types.h"

#include <cstdint>

namespace kelvo::desktop {

/// Indices run from 0 to this, exclusive.
inline constexpr std::uintptr_t kSystemColourCount = 31;

} // namespace kelvo::desktop
