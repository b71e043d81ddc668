#pragma once
// Which message comes next, and the input that it came from.

#include "platform/desktop/MessageQueue.h"

namespace kelvo::desktop {

/// Calls of other threads are answered first; then posted messages, input, WM_PAINT, WM_TIMER. Does
/// not wait and leaves WM_QUIT alone: it belongs to the program's own loop.
bool TakeNextButQuit(MessageQueue& queue, MSG& message);

/// The input behind the message that DispatchMessageA is dispatching on this thread.
std::shared_ptr<QEvent> InputInDispatch();

/// The same, if it is this very message of this window that is being dispatched. @return null for
/// one that was sent or posted by the program.
std::shared_ptr<QEvent> InputBehindMessage(HWND window, UINT message);

/// Calls the window's procedure on the calling thread. @return 0 when the window is no more.
LRESULT CallWindow(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

} // namespace kelvo::desktop
