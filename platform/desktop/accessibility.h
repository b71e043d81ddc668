#pragma once
// What assistants such as screen readers are told of windows that draw themselves. Their name is
// their text; standard controls, menus and dialogs describe themselves.

#include "platform/base/types.h"

namespace kelvo::platform {

struct AccessibleButton {
    bool toggles = false; ///< stays down until it is pressed again
    bool is_down = false;
    bool has_keyboard = false;
};

/// Tells assistants that the window is a button, and how it stands. What an assistant presses comes
/// as WM_LBUTTONDOWN and WM_LBUTTONUP in the middle of the window. UI thread only.
void DescribeButton(HWND window, AccessibleButton button);

} // namespace kelvo::platform
