#pragma once
// "What is this?": while a dialog tracks, the tip of the innermost control under the pointer
// follows the pointer, until a button or a modifier key goes down.

#include "platform/base/types.h"

namespace kelvo {

class ContextHelp;

class ToolTipTracking {
public:
    explicit ToolTipTracking(ContextHelp& help) : help_(help) {}

    /// What a dialog does at WM_INITDIALOG.
    void Clear();
    /// From now on each move of the mouse over the dialog shows what is under it.
    void Begin(HWND dialog);
    bool IsTracking() const { return tracking_; }
    /// The control whose tip is showing, 0 when none is.
    HWND ExplainedControl() const { return explained_; }

    /// A message of the dialog: WM_MOUSEMOVE while tracking.
    /// @return whether it was handled
    bool HandleMessage(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

private:
    bool OnMouseMove(HWND dialog, WPARAM held, POINT point);
    void End();
    void Explain(HWND control, POINT screen_point);

    ContextHelp& help_;
    bool tracking_ = false;
    HWND explained_ = nullptr;
};

} // namespace kelvo
