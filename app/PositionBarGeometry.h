#pragma once
// Where the controls of the main window's upper strip stand, in pixels of its client area.

#include "platform/base/types.h"

namespace kelvo {

/// Height of the strip above the picture.
inline constexpr LONG kStripHeight = 24;

/// Of the volume slider and the time labels.
inline constexpr LONG kToolDialogLeft = 169;
inline constexpr LONG kToolDialogTop = 4;

inline constexpr LONG kPositionBarTop = 5;
inline constexpr LONG kPositionBarHeight = 14;
inline constexpr LONG kPositionBarRightMargin = 2;
/// The bar begins right of the button bar and of the tool dialog, whose width is given in dialog
/// units of its font.
LONG PositionBarLeft();

} // namespace kelvo
