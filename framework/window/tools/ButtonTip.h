#pragma once
// When the tip of a button shows itself: once the pointer has rested on it for a while. There is
// one pending tip for all buttons.

#include "platform/desktop/windows.h"

namespace kelvo {

class BitmapButton;

/// The timer of tips, which button menus use, too.
inline constexpr UINT_PTR kTipTimer = 1965;

namespace button_tip {

/// The pointer moves over the button: begins to wait unless a tip is waited for already.
void OnPointerMoved(const BitmapButton& button);
/// The timer's tick, every 50 ms: the tip comes with the eleventh on which the pointer has not
/// moved since the one before, and goes when the pointer has left.
void OnTick(const BitmapButton& button);
/// The button has got the keyboard: its tip shows where the keyboard is.
void ShowForKeyboard(const BitmapButton& button);
/// A press, a release, the loss of the keyboard or the button's end: hides its tip and waits no
/// longer.
void Stop(const BitmapButton& button);

} // namespace button_tip
} // namespace kelvo
