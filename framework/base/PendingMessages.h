#pragma once
// The seam through which long work on the UI thread lets windows answer between two steps.

namespace kelvo {

/// Dispatches every message that waits; does nothing in a program without windows.
void ProcessPendingMessages();

using PendingMessagesHook = void (*)();
/// Set by the window layer when it starts; null takes it away. UI thread only.
/// @return the hook that was there
PendingMessagesHook SetPendingMessagesHook(PendingMessagesHook hook);

} // namespace kelvo
