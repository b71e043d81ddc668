#include "framework/window/dialogs/SelectByListDialoglum.h"

#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr char kTemplate[] = "lum_SelectByListDialoglumDlg";
constexpr int kPrompt = 101;
constexpr int kList = 102;
constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr COLORREF kBlack = 0x000000;
constexpr COLORREF kWhite = 0xFFFFFF;

} // namespace

SelectByListDialoglum::SelectByListDialoglum() {
    SetControlColours(kPrompt, kBlack, kWhite);
    SetControlColours(kList, kBlack, kWhite);
    SetDialogBackground(kWhite);
}

LPARAM SelectByListDialoglum::Ask(CWin* owner, std::span<const CString> items,
                                  std::int32_t& selected, const CString& caption,
                                  const CString& prompt) {
    items_ = items;
    selected_ = &selected;
    caption_ = caption;
    prompt_ = prompt;
    const LPARAM result = ModalRun(owner, kTemplate);
    items_ = {};
    selected_ = nullptr;
    return result;
}

bool SelectByListDialoglum::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CDialog::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case WM_INITDIALOG:
        return OnInitialise();
    case WM_COMMAND:
        return HIWORD(wparam) == BN_CLICKED && OnCommand(LOWORD(wparam));
    default:
        return false;
    }
}

bool SelectByListDialoglum::OnInitialise() {
    SetText(caption_.Text());
    SetControlText(kPrompt, prompt_);
    for (const CString& item : items_) {
        SendDlgItemMessageA(Window(), kList, LB_ADDSTRING, 0,
                            reinterpret_cast<LPARAM>(item.Text()));
    }
    if (*selected_ >= 0 && static_cast<std::size_t>(*selected_) < items_.size()) {
        SendDlgItemMessageA(Window(), kList, LB_SETCURSEL, static_cast<WPARAM>(*selected_), 0);
    }
    return true;
}

bool SelectByListDialoglum::OnCommand(int control_id) {
    switch (control_id) {
    case kOk:
        *selected_ =
            static_cast<std::int32_t>(SendDlgItemMessageA(Window(), kList, LB_GETCURSEL, 0, 0));
        EndDialog(1);
        return true;
    case kCancel:
        EndDialog(0);
        return true;
    default:
        return false;
    }
}

bool SelectByListDialoglum::OnDoubleClick(HWND /*control*/, int id, int index) {
    if (id != kList) return false;
    *selected_ = index;
    EndDialog(1);
    return true;
}

} // namespace kelvo
