#pragma once
// Creating a window by what it is for; programs call CreateWindowExA. UI thread only.

#include "platform/desktop/windows.h"

#include <cstdint>

namespace kelvo::desktop {

/// What a top-level window is to the window manager and to assistive programs.
enum class FrameRole : std::uint8_t { Window, Dialog };

/// CreateWindowExA with its arguments as they are told to WM_NCCREATE.
HWND CreateWindowInRole(const CREATESTRUCTA& asked, FrameRole role);

} // namespace kelvo::desktop
