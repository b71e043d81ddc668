#pragma once
// The text of a window where the window manager shows it.

#include "platform/base/types.h"

namespace kelvo::desktop {

/// Gives a top-level window's frame the text that the table has. UI thread only.
void ApplyTitle(HWND window);

} // namespace kelvo::desktop
