#pragma once
// The help texts of a dialog's controls and the tool tip that shows one of them. When a tip is
// shown and hidden is decided by the dialog.

#include "framework/base/CString.h"
#include "platform/base/types.h"

#include <map>

namespace kelvo {

class CDialog;

class ContextHelp {
public:
    explicit ContextHelp(CDialog& dialog) : dialog_(dialog) {}
    ~ContextHelp();
    ContextHelp(const ContextHelp&) = delete;
    ContextHelp& operator=(const ContextHelp&) = delete;

    /// Gives a control its text; a null or empty one takes it away.
    void SetText(int id, LPCSTR text);
    bool HasText(HWND control) const;
    /// Offers a message of the dialog. @return true when it was consumed
    bool Offer(UINT message, WPARAM wparam, LPARAM lparam);
    /// Shows the control's text with its top left corner at a point of the screen.
    void ShowTip(HWND control, POINT screen_point);
    void HideTip();
    bool IsTipShowing() const;

private:
    CDialog& dialog_;
    std::map<int, CString> texts_;
    HWND tip_ = nullptr;
};

} // namespace kelvo
