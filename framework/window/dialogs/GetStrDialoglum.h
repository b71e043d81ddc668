#pragma once
// The ready-made dialog that asks for a text under a prompt.

#include "framework/base/CString.h"
#include "framework/window/CDialog.h"

namespace kelvo {

class GetStrDialoglum : public CDialog {
public:
    GetStrDialoglum();

    /// Shows the text to edit and runs. OK stores what was typed, "Annulla" empties the text.
    /// @return 1 after OK, else 0
    LPARAM Ask(CWin* owner, CString& text, const CString& caption, const CString& prompt);

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    bool OnInitialise();
    bool OnCommand(int control_id);

    CString* text_ = nullptr; ///< the caller's, while it runs
    CString caption_;
    CString prompt_;
};

} // namespace kelvo
