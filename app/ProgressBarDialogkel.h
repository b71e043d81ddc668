#pragma once
// The player's progress dialog, and the seam through which work that knows no window shows it.

#include "framework/window/dialogs/ProgressBarDialoglum.h"

namespace kelvo {

class ProgressBarDialogkel : public ProgressBarDialoglum {
public:
    ProgressBarDialogkel();
};

/// While it lives, ShowProgress shows the player's dialog; on other threads than the one that made
/// it, nothing.
class ProgressDialogs {
public:
    /// @param owner  the window that the dialogs stand in front of, once it is there; outlives this
    explicit ProgressDialogs(CWin& owner);
    ~ProgressDialogs();
    ProgressDialogs(const ProgressDialogs&) = delete;
    ProgressDialogs& operator=(const ProgressDialogs&) = delete;
};

} // namespace kelvo
