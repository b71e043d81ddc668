#pragma once
// Menus as the windows see them. UI thread only.

#include "platform/base/types.h"

namespace kelvo::desktop {

/// Number of living menus.
int CountMenus();

/// Destroys all that are left, at the end of the desktop.
void DestroyAllMenus();

} // namespace kelvo::desktop
