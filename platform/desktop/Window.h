#pragma once
// What the other parts of this layer need to know of windows: the surface behind a handle, what is
// to be painted, and how changed pixels reach the screen. Programs include windows.h instead.

#include "platform/base/types.h"

#include <memory>
#include <optional>

namespace kelvo::desktop {

class Surface;

/// The pixels of a window's client area; they stay valid while the caller holds them, also after
/// the window has gone. Any thread. @return nothing for a handle of no window.
std::shared_ptr<Surface> SurfaceOf(HWND window);

/// Brings changed pixels of a window's surface to the screen: at once when the window's thread next
/// asks for messages or waits, several changes in one. Any thread; never blocks on the UI thread.
/// @param changed  in client coordinates
void PresentSoon(HWND window, const RECT& changed);

/// What WM_PAINT has to paint.
struct Update {
    RECT rect;  ///< in client coordinates
    bool erase; ///< whether WM_ERASEBKGND is due first
};

/// Takes what is to be painted and thereby validates the window (the beginning of BeginPaint).
std::optional<Update> TakeUpdate(HWND window);

/// CS_ values of the window's class, 0 for no window. Any thread.
UINT ClassStyleOf(HWND window);

/// The background brush of the window's class as it was registered. Any thread.
HBRUSH ClassBrushOf(HWND window);

/// Numbers of living objects, for tests that look for leaks.
struct LiveCounts {
    int windows;
    int menus;
    int timers;
};
LiveCounts CountLiveObjects();

} // namespace kelvo::desktop
