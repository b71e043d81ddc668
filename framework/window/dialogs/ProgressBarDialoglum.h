#pragma once
// The dialog that stands beside long work on the UI thread: a bar, three times, and a button that
// asks the work to stop.

#include "framework/base/CString.h"
#include "framework/window/CDialog.h"
#include "framework/window/CProgressBar.h"

#include <cstdint>

namespace kelvo {

class ProgressBarDialoglum : public CDialog {
public:
    /// With the framework's own template.
    ProgressBarDialoglum();
    /// With a template of the same controls.
    explicit ProgressBarDialoglum(LPCSTR template_name);

    /// Shows the dialog; its times begin with the next update.
    /// @param owner  may be null
    /// @return 0 when it is shown already or could not be made, after a box
    int Start(CWin* owner, const CString& title);
    /// The times begin anew, too.
    void SetTitle(LPCSTR title);
    /// Shows how far the work is, and dispatches what waits.
    /// @return false once the person has asked to stop
    bool Update(std::int32_t current, std::int32_t total);
    /// Takes the dialog away.
    void Close() { EndDialog(0); }
    bool IsCancelled() const { return cancelled_; }

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    bool OnInitialise();
    bool OnCommand(int id);
    void ShowTimes(std::int32_t current, std::int32_t total) const;
    void ShowTime(int id, std::int64_t milliseconds) const;

    // One run at a time is measured, whichever dialog shows it.
    static inline DWORD start_ms_ = 0;
    static inline CString time_text_;

    CProgressBar bar_;
    bool cancelled_ = false;
    bool restarts_ = false; ///< the next update begins the times
};

} // namespace kelvo
