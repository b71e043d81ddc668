#pragma once
// Message boxes as real windows. The box of the UI thread waits in a loop of its own; that of
// another thread only lies there until it is answered, so that the UI thread may even wait for the
// thread that asked.

#include "platform/base/message_boxes.h"

namespace kelvo::desktop {

/// Shows the box and waits for the answer; the UI thread shows it, whoever asks. Any thread. The
/// box of a thread that is ended meanwhile goes.
int ShowMessageBox(const platform::MessageBoxRequest& request);

/// Whether a box lies there that another thread has asked for. UI thread only.
bool IsThreadsBoxOpen();
/// Answers those boxes with the safe answer. UI thread only.
void CloseThreadsBoxes();

} // namespace kelvo::desktop
