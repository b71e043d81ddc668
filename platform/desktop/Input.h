#pragma once
// Mouse, keyboard and input methods on their way from the toolkit into the queue. UI thread only.

#include "platform/base/types.h"

class QWidget;

namespace kelvo::desktop {

/// From now on the widget's input becomes queued messages of the window.
void WatchWidget(QWidget* widget, HWND window);

/// Takes focus and capture from a window that goes.
void ForgetInput(HWND window);

/// Posts WM_CHAR for the text that an input method gave with the message in dispatch.
void PostComposedText(HWND window);

} // namespace kelvo::desktop
