// The calls that reach a control by its number.

#include "platform/desktop/WindowTable.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/dialogs/DialogState.h"

using namespace kelvo::desktop;

HWND GetDlgItem(HWND dialog, int id) {
    LockedWindows windows;
    const WindowData* data = windows.Find(dialog);
    if (data == nullptr) return nullptr;
    for (const HWND child : data->children) {
        const WindowData* below = windows.Find(child);
        if (below != nullptr && below->kind == WindowKind::Child && below->id == id) return child;
    }
    return nullptr;
}

int GetDlgCtrlID(HWND control) {
    LockedWindows windows;
    const WindowData* data = windows.Find(control);
    return data == nullptr ? 0 : data->id;
}

BOOL SetDlgItemTextA(HWND dialog, int id, LPCSTR text) {
    return ::SetWindowTextA(::GetDlgItem(dialog, id), text);
}

UINT GetDlgItemTextA(HWND dialog, int id, LPSTR text, int capacity) {
    return static_cast<UINT>(::GetWindowTextA(::GetDlgItem(dialog, id), text, capacity));
}

LRESULT SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wparam, LPARAM lparam) {
    const HWND control = ::GetDlgItem(dialog, id);
    return control == nullptr ? 0 : ::SendMessageA(control, message, wparam, lparam);
}

BOOL CheckDlgButton(HWND dialog, int id, UINT check) {
    const HWND control = ::GetDlgItem(dialog, id);
    if (control == nullptr) return FALSE;
    ::SendMessageA(control, BM_SETCHECK, check, 0);
    return TRUE;
}

UINT IsDlgButtonChecked(HWND dialog, int id) {
    return static_cast<UINT>(::SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0));
}

BOOL MapDialogRect(HWND dialog, RECT* rect) {
    const DialogState* state = DialogStateOf(dialog);
    if (state == nullptr || rect == nullptr) return FALSE;
    *rect = {state->units.Horizontal(rect->left), state->units.Vertical(rect->top),
             state->units.Horizontal(rect->right), state->units.Vertical(rect->bottom)};
    return TRUE;
}
