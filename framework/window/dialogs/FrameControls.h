#pragma once
// The two frames that a dialog's template can ask for by a control id: grey areas with a sunken or
// a raised edge.

#include "platform/base/types.h"

namespace kelvo {

/// WM_DRAWITEM of a control with an id above this one asks the dialog for a frame.
inline constexpr int kLastIdWithoutFrame = 10000;
inline constexpr int kSunkenFrameId = 10001;
inline constexpr int kRaisedFrameId = 10002;
/// Set as the background colour of a frame's device context before it is drawn.
inline constexpr COLORREF kFrameBackground = 0xC0C0C0;

/// Fills the control's client area with light grey and draws the four edges.
/// @return 1, or 0 for an id that is none of the two: nothing is drawn
int DrawFrameControl(HWND control, HDC context, int control_id);

} // namespace kelvo
