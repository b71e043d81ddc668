#pragma once
// What a control that its owner draws asks of the owner. UI thread only.

#include "platform/desktop/controls.h"

namespace kelvo::desktop {

/// WM_DRAWITEM for the whole control, over the background that the parent chose for it.
/// @param state  ODS_; ODS_DISABLED is added for a disabled window
void SendDrawItem(HWND window, HWND parent, UINT type, UINT state, HDC dc);

/// WM_MEASUREITEM; a control keeps the size that it was made with, whatever the answer.
void SendMeasureItem(HWND window, HWND parent, UINT type);

} // namespace kelvo::desktop
