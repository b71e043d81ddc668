#pragma once
// What the other parts of this layer need to know of windows and of the UI thread's loop; the
// surface behind a handle is Surface.h's. Programs include windows.h instead.

#include "platform/base/types.h"

#include <memory>

class QWidget;

namespace kelvo::desktop {

class Surface;

/// Has the UI thread call DeliverChanges of the surface as soon as it asks for messages or waits
/// (Sleep and its kind included); several requests before that are one. Any thread, never blocks.
void DeliverSoon(const std::weak_ptr<Surface>& surface);

/// Makes the UI thread look again for what is to be painted. Any thread, never blocks.
void WakeUiThread();

/// Whether the calling thread is the one that StartDesktop was called on.
bool OnUiThread();

/// The widget that shows the window's client area; it goes with the window. UI thread only.
/// @return null for a handle of no window.
QWidget* WidgetOf(HWND window);

/// The background brush of the window's class as it was registered. Any thread.
HBRUSH ClassBrushOf(HWND window);

/// Numbers of living objects, for tests that look for leaks; the surface of a dead window lives
/// until the UI thread next asks for messages.
struct LiveCounts {
    int windows = 0;
    int menus = 0;
    int surfaces = 0;
    int timers = 0;
    bool operator==(const LiveCounts&) const = default;
};
LiveCounts CountLiveObjects();

} // namespace kelvo::desktop
