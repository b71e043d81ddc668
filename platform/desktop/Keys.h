#pragma once
// The numbers of keys in key messages.

#include "platform/base/types.h"

class QKeyEvent;

namespace kelvo::desktop {

/// The VK_ value; a letter's or digit's own capital ASCII; 0 for a key that has none.
WPARAM VirtualKey(const QKeyEvent& event);

/// The toolkit's key for a VK_ number, 0 for one without.
int ToolkitKey(WPARAM number);

} // namespace kelvo::desktop
