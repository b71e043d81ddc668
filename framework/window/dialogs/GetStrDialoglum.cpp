#include "framework/window/dialogs/GetStrDialoglum.h"

#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr char kTemplate[] = "lum_GetStrDialoglumDlg";
constexpr int kPrompt = 101;
constexpr int kValue = 102;
constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr COLORREF kBlack = 0x000000;
constexpr COLORREF kWhite = 0xFFFFFF;

} // namespace

GetStrDialoglum::GetStrDialoglum() {
    SetControlColours(kPrompt, kBlack, kWhite);
    SetControlColours(kValue, kBlack, kWhite);
    SetDialogBackground(kWhite);
}

LPARAM GetStrDialoglum::Ask(CWin* owner, CString& text, const CString& caption,
                            const CString& prompt) {
    text_ = &text;
    caption_ = caption;
    prompt_ = prompt;
    const LPARAM result = ModalRun(owner, kTemplate);
    text_ = nullptr;
    return result;
}

bool GetStrDialoglum::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
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

bool GetStrDialoglum::OnInitialise() {
    SetText(caption_.Text());
    SetControlText(kPrompt, prompt_);
    SetControlText(kValue, *text_);
    return true;
}

bool GetStrDialoglum::OnCommand(int control_id) {
    switch (control_id) {
    case kOk:
        *text_ = ControlText(kValue);
        EndDialog(1);
        return true;
    case kCancel:
        text_->Clear();
        EndDialog(0);
        return true;
    default:
        return false;
    }
}

} // namespace kelvo
