#pragma once
// The help texts of a dialog's controls and the yellow tip that shows them: for the control that
// has the keyboard on F1, for the one under the pointer once the pointer rests there, and for
// whatever the tracking of tool tips points at. One object a dialog; UI thread only.

#include "framework/base/CString.h"
#include "platform/base/types.h"

#include <map>
#include <memory>

namespace kelvo {

class CLittleWin;

class ContextHelp {
public:
    ContextHelp();
    ContextHelp(const ContextHelp&) = delete;
    ContextHelp& operator=(const ContextHelp&) = delete;
    ~ContextHelp();

    /// Gives a control a help text; an empty one takes it away.
    void Register(int control_id, const CString& text);
    bool HasTexts() const { return !texts_.empty(); }
    /// Whether the window is a control with a help text.
    bool Explains(HWND control) const;
    /// The visible control with a help text at a point of the screen, the smallest where they lie
    /// in each other. @return 0 when there is none
    HWND ExplainedAt(HWND dialog, POINT screen_point) const;

    /// Offers a message of the dialog. WM_HELP shows the tip of the control that it names;
    /// WM_COMMAND with both parameters 0 hides a tip; any other command and the window's end hide
    /// it, too, but go on.
    /// @return whether the message was consumed
    bool Offer(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

    bool ShowsTip() const;
    /// Shows the control's text with its corner at a point of the screen, moved only as far as the
    /// screen's edges ask for; a control without a text shows nothing.
    void ShowTip(HWND control, POINT corner);
    void HideTip();

private:
    /// Where the pointer has been resting, and what that has shown.
    struct Rest {
        POINT point{};
        HWND control = nullptr;
        int ticks = 0;
        bool has_shown = false;
    };

    bool OnHelpKey(HWND dialog, LPARAM help);
    bool OnRestTimer(HWND dialog);
    void KeepTimer(HWND dialog, UINT message);

    std::map<int, CString> texts_;    ///< by control id
    std::unique_ptr<CLittleWin> tip_; ///< made when the first tip is shown
    Rest rest_;
    bool timer_runs_ = false;
};

} // namespace kelvo
