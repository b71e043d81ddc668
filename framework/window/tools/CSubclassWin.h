#pragma once
// Puts a standard control under a framework object: its messages reach the object first.

#include "framework/base/CString.h"
#include "framework/window/CWin.h"

namespace kelvo {

class CSubclassWin : public CWin {
public:
    /// @param control_class  of the control, such as "EDIT"
    explicit CSubclassWin(const char* control_class);
    ~CSubclassWin() override;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    /// Makes the control, a child exactly when it has a parent, and binds it. @return 1, or 0 after
    /// a box.
    int Create() override;

    const CString& ControlClass() const { return control_class_; }
    UINT LastMessage() const { return last_message_; }
    WPARAM LastWParam() const { return last_wparam_; }
    LPARAM LastLParam() const { return last_lparam_; }

private:
    friend LRESULT SubclassWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

    CString control_class_;
    WNDPROC previous_procedure_ = nullptr;
    UINT last_message_ = 0;
    WPARAM last_wparam_ = 0;
    LPARAM last_lparam_ = 0;
};

/// The window procedure of every control under a CSubclassWin; what the object does not handle goes
/// to the control's own procedure.
LRESULT SubclassWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

} // namespace kelvo
