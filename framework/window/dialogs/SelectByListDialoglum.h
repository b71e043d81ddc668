#pragma once
// The ready-made dialog that lets one text of a list be chosen.

#include "framework/base/CString.h"
#include "framework/window/CDialog.h"

#include <cstdint>
#include <span>

namespace kelvo {

class SelectByListDialoglum : public CDialog {
public:
    SelectByListDialoglum();

    /// Shows the list with an item selected, if `selected` is one, and runs. OK stores the
    /// selection (-1 when there is none), a double click the item that it hit; "Annulla" leaves
    /// `selected` alone.
    /// @return 1 after OK or a double click, else 0
    LPARAM Ask(CWin* owner, std::span<const CString> items, std::int32_t& selected,
               const CString& caption, const CString& prompt);

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    bool OnDoubleClick(HWND control, int id, int index) override;

private:
    bool OnInitialise();
    bool OnCommand(int control_id);

    std::span<const CString> items_;   ///< the caller's, while it runs
    std::int32_t* selected_ = nullptr; ///< the caller's, while it runs
    CString caption_;
    CString prompt_;
};

} // namespace kelvo
