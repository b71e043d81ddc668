#pragma once
// Mouse, keyboard and input methods on their way from the toolkit into the queue. UI thread only.

#include "platform/base/types.h"

class QEvent;
class QWidget;

namespace kelvo::desktop {

/// From now on the widget's input becomes queued messages of the window.
void WatchWidget(QWidget* widget, HWND window);

/// A press on the menu bar also becomes a queued message of the window; the bar still gets it.
void WatchMenuBar(QWidget* bar, HWND window);

/// The same for the widget of a control and all that lies in it, now and later.
void WatchControl(QWidget* widget, HWND window);

/// Hands an event to a widget, past the queue.
void GiveToWidget(QWidget& receiver, QEvent& event);

/// The window whose client area or control the widget lies in, 0 when there is none.
HWND WindowOf(const QWidget* widget);

/// Takes focus and capture from a window that goes.
void ForgetInput(HWND window);

/// Posts WM_CHAR for the text that an input method gave with the message in dispatch.
void PostComposedText(HWND window);

} // namespace kelvo::desktop
