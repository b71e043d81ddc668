#pragma once
// Message boxes as real windows.

#include "platform/base/message_boxes.h"

namespace kelvo::desktop {

/// Shows the box and waits for the answer; the UI thread shows it, whoever asks. Any thread.
int ShowMessageBox(const platform::MessageBoxRequest& request);

} // namespace kelvo::desktop
