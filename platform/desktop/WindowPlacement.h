#pragma once
// Where windows are: the widgets are made to follow the table, and the table the window manager. UI
// thread only.

#include "platform/base/types.h"

#include <QRect>

namespace kelvo::desktop {

/// Puts the widgets where the table says, and notes where the client area then is on the screen.
void PlaceWidgets(HWND window);

/// The window manager has moved or resized the frame of a top-level window.
void OnFrameMoved(HWND window);
void OnFrameResized(HWND window);

/// The client area may have another size now (a menu came or went): follow, and send WM_SIZE if so.
void AdaptClient(HWND window);

void SendMove(HWND window);
void SendSize(HWND window);

} // namespace kelvo::desktop
