#pragma once
// How the progress dialogs write a time.

#include "framework/base/CString.h"

#include <cstdint>

namespace kelvo {

/// "mm:ss " of milliseconds; minutes are not limited to 59.
CString MinutesAndSeconds(std::int64_t milliseconds);

} // namespace kelvo
