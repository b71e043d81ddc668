#pragma once
// What lies around the client areas that this layer frames itself: which part of it was pressed,
// and sizing by it. UI thread only.

#include "platform/base/types.h"

#include <QPoint>

#include <optional>

namespace kelvo::desktop {

struct FrameHit {
    HWND window = nullptr;
    WPARAM part = 0; ///< one of the HT values
};

/// @param window  whose widget is under the point
/// @return nothing when the point lies in the window's client area and in no frame of its children
std::optional<FrameHit> FrameHitAt(HWND window, QPoint on_screen);

/// Lets the mouse that was pressed on a part of the window's frame size the window, until it is let
/// go; nothing happens unless the window has a sizing frame.
void SizeByMouse(HWND window, WPARAM part);

} // namespace kelvo::desktop
