// What a dialog does with its messages, in their fixed order.

#include "framework/window/CDialog.h"
#include "framework/window/dialogs/FrameControls.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/drawing.h"

namespace kelvo {

bool CDialog::HandleClassMessage(UINT /*message*/, WPARAM /*wparam*/, LPARAM /*lparam*/) {
    return false;
}
bool CDialog::OnSelectionChanged(HWND /*control*/, int /*id*/, int /*index*/) {
    return false;
}
bool CDialog::OnDropDown(HWND /*control*/, int /*id*/) {
    return false;
}
bool CDialog::OnCloseUp(HWND /*control*/, int /*id*/) {
    return false;
}
bool CDialog::OnNotification4(HWND /*control*/, int /*id*/) {
    return false;
}
bool CDialog::OnNotification3(HWND /*control*/, int /*id*/) {
    return false;
}
bool CDialog::OnDoubleClick(HWND /*control*/, int /*id*/, int /*index*/) {
    return false;
}
bool CDialog::PreTranslate(MSG* /*message*/) {
    return false;
}
bool CDialog::DrawFrame(HWND control, HDC context, int id) {
    return DrawFrameControl(control, context, id) != 0;
}

bool CDialog::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        tool_tips_.Clear();
        if (!Title().IsEmpty()) SetWindowTextA(Window(), Title().Text());
    }
    if (has_context_help_ && context_help_.Offer(Window(), message, wparam, lparam)) return true;
    list_editing_.See(Window(), message, wparam, lparam);
    label_editing_.See(Window(), message, wparam, lparam);
    if (tool_tips_.HandleMessage(Window(), message, wparam, lparam)) return true;
    switch (message) {
    case kEndDialogMessage:
        OnEndMessage(lparam);
        return false;
    case WM_INITDIALOG:
        MakeSchemeBrushes();
        return false;
    case WM_COMMAND:
        return OnCommand(HIWORD(wparam), LOWORD(wparam), reinterpret_cast<HWND>(lparam))
            .value_or(false);
    case WM_DESTROY:
        return CWin::HandleMessage(message, wparam, lparam);
    case WM_CTLCOLORMSGBOX:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORDLG:
    case WM_CTLCOLORSCROLLBAR:
    case WM_CTLCOLORSTATIC: {
        const HDC context = reinterpret_cast<HDC>(wparam);
        const HWND control = reinterpret_cast<HWND>(lparam);
        return ColourControl(message, context, control) ||
               ApplyColourScheme(message, context, control);
    }
    case WM_MEASUREITEM:
        return owner_draw_buttons_.HandleMessage(message, wparam, lparam);
    case WM_DRAWITEM:
        return owner_draw_buttons_.HandleMessage(message, wparam, lparam) || OnDrawItem(lparam);
    default:
        return false;
    }
}

/// @return what the slot said; nothing for a notification that has none
std::optional<bool> CDialog::OnCommand(UINT code, int id, HWND control) {
    switch (code) {
    case LBN_SELCHANGE:
    case LBN_DBLCLK:
        return OnSelection(code, id, control);
    case CBN_SETFOCUS:
        return OnNotification3(control, id);
    case LBN_SETFOCUS: // and the combo box's loss of it
        return OnNotification4(control, id);
    case CBN_DROPDOWN:
        return OnDropDown(control, id);
    case CBN_CLOSEUP:
        return OnCloseUp(control, id);
    default:
        return std::nullopt;
    }
}

std::optional<bool> CDialog::OnSelection(UINT code, int id, HWND control) {
    char class_name[2]{};
    if (GetClassNameA(control, class_name, sizeof class_name) == 0) return std::nullopt;
    UINT ask = 0;
    switch (class_name[0]) {
    case 'L':
    case 'l':
        ask = LB_GETCURSEL;
        break;
    case 'C':
    case 'c':
        ask = CB_GETCURSEL;
        break;
    default:
        return std::nullopt;
    }
    const int index = static_cast<int>(SendMessageA(control, ask, 0, 0));
    return code == LBN_SELCHANGE ? OnSelectionChanged(control, id, index)
                                 : OnDoubleClick(control, id, index);
}

bool CDialog::OnDrawItem(LPARAM lparam) {
    const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lparam);
    if (DrawStaticBitmap(static_bitmaps_, item)) return true;
    const int id = static_cast<int>(item.CtlID);
    if (id > kLastIdWithoutFrame) {
        SetBkColor(item.hDC, kFrameBackground);
        if (DrawFrame(item.hwndItem, item.hDC, id)) {
            SetMessageResult(reinterpret_cast<LRESULT>(GetStockObject(LTGRAY_BRUSH)));
            return true;
        }
    }
    return ApplyColourScheme(WM_DRAWITEM, item.hDC, item.hwndItem);
}

} // namespace kelvo
