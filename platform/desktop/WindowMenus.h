#pragma once
// Menus as the windows see them. UI thread only.

#include "platform/base/types.h"

namespace kelvo::desktop {

/// Property of a window whose menu bar is held: how often.
inline constexpr char kMenuHolds[] = "KelvoMenuHolds";

/// Number of living menus.
int CountMenus();

/// Destroys all that are left, at the end of the desktop.
void DestroyAllMenus();

} // namespace kelvo::desktop
