// What a dialog's class answers when its dialog procedure does not.

#include "platform/base/message_boxes.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/dialogs/DialogState.h"
#include "platform/desktop/drawing.h"

using namespace kelvo::desktop;

namespace {

/// Messages whose answer is what the dialog procedure returns, not a value beside it.
bool IsAnsweredDirectly(UINT message) {
    return (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC) ||
           message == WM_INITDIALOG;
}

LRESULT EraseBackground(HWND dialog, HDC context) {
    const LRESULT answer = ::SendMessageA(dialog, WM_CTLCOLORDLG, reinterpret_cast<WPARAM>(context),
                                          reinterpret_cast<LPARAM>(dialog));
    HBRUSH brush = reinterpret_cast<HBRUSH>(answer);
    if (brush == nullptr) brush = reinterpret_cast<HBRUSH>(INT_PTR{COLOR_BTNFACE + 1});
    RECT area{};
    ::GetClientRect(dialog, &area);
    ::FillRect(context, &area, brush);
    return TRUE;
}

LRESULT OnClose(HWND dialog) {
    const HWND cancel = ::GetDlgItem(dialog, IDCANCEL);
    if (cancel != nullptr && ::IsWindowEnabled(cancel) == FALSE) {
        ::MessageBeep(0);
    } else {
        ::PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                       reinterpret_cast<LPARAM>(cancel));
    }
    return 0;
}

LRESULT OnNextControl(HWND dialog, WPARAM wparam, bool is_handle) {
    const HWND wanted = is_handle
                            ? reinterpret_cast<HWND>(wparam)
                            : ::GetNextDlgTabItem(dialog, ::GetFocus(), wparam != 0 ? TRUE : FALSE);
    FocusControl(dialog, wanted);
    return 0;
}

LRESULT Default(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    DialogState* const state = DialogStateOf(dialog);
    switch (message) {
    case WM_ERASEBKGND:
        return EraseBackground(dialog, reinterpret_cast<HDC>(wparam));
    case WM_CTLCOLORDLG:
    case WM_INITDIALOG:
        return 0;
    case WM_SETFOCUS:
        RestoreFocus(dialog);
        return 0;
    case WM_CLOSE:
        return OnClose(dialog);
    case WM_NEXTDLGCTL:
        return OnNextControl(dialog, wparam, LOWORD(static_cast<DWORD_PTR>(lparam)) != 0);
    case DM_GETDEFID:
        if (state == nullptr || state->default_id == 0) return 0;
        return MAKELONG(static_cast<WORD>(state->default_id), DC_HASDEFID);
    case DM_SETDEFID:
        if (state != nullptr) state->default_id = static_cast<int>(wparam);
        return TRUE;
    case WM_SETFONT:
        return 0; // the controls have it; the dialog itself writes nothing
    case WM_GETFONT:
        return state == nullptr ? 0 : reinterpret_cast<LRESULT>(state->font);
    case WM_NCDESTROY:
        ForgetDialogState(dialog);
        break;
    default:
        break;
    }
    return ::DefWindowProcA(dialog, message, wparam, lparam);
}

} // namespace

LRESULT DefDlgProcA(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto procedure = reinterpret_cast<DLGPROC>(::GetWindowLongPtrA(dialog, DWLP_DLGPROC));
    if (procedure == nullptr) return Default(dialog, message, wparam, lparam);
    ::SetWindowLongPtrA(dialog, DWLP_MSGRESULT, 0);
    const INT_PTR handled = procedure(dialog, message, wparam, lparam);
    if (message == WM_NCDESTROY) ForgetDialogState(dialog);
    if (handled == 0) return Default(dialog, message, wparam, lparam);
    if (IsAnsweredDirectly(message)) return handled;
    return ::GetWindowLongPtrA(dialog, DWLP_MSGRESULT);
}
