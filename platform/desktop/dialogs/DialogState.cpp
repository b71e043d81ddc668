#include "platform/desktop/dialogs/DialogState.h"

#include "platform/base/message_boxes.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/drawing.h"

#include <map>

namespace kelvo::desktop {

namespace {

std::map<HWND, DialogState>& States() {
    static auto* const states = new std::map<HWND, DialogState>; // outlives the program's objects
    return *states;
}

std::vector<HWND> ChildrenOf(HWND window) {
    LockedWindows windows;
    std::vector<HWND> children;
    const WindowData* data = windows.Find(window);
    if (data == nullptr) return children;
    for (const HWND child : data->children) {
        const WindowData* below = windows.Find(child);
        if (below != nullptr && below->kind == WindowKind::Child && !below->dying) {
            children.push_back(child);
        }
    }
    return children;
}

bool HasStyle(HWND window, DWORD style) {
    return (static_cast<DWORD>(::GetWindowLongPtrA(window, GWL_STYLE)) & style) != 0;
}

bool IsPage(HWND control) {
    return (static_cast<DWORD>(::GetWindowLongPtrA(control, GWL_EXSTYLE)) & WS_EX_CONTROLPARENT) !=
           0;
}

void CollectControls(HWND window, std::vector<HWND>& controls) {
    for (const HWND child : ChildrenOf(window)) {
        if (IsPage(child)) {
            if (IsUsable(child)) CollectControls(child, controls);
        } else {
            controls.push_back(child);
        }
    }
}

/// The control of the dialog that the toolkit remembers as the last one with the keyboard.
HWND LastFocused(HWND dialog) {
    const FrameWidget* frame = FrameOf(dialog);
    if (frame == nullptr) return nullptr;
    const std::vector<HWND> controls = ControlsOf(dialog);
    for (const QWidget* widget = frame->focusWidget(); widget != nullptr && widget != frame;
         widget = widget->parentWidget()) {
        for (const HWND control : controls) {
            if (WidgetOf(control) == widget) return control;
        }
    }
    return nullptr;
}

/// Shows in the buttons which one Enter presses now.
void ShowDefault(HWND dialog, HWND wanted) {
    for (const HWND control : ControlsOf(dialog)) {
        const LRESULT code = DialogCode(control);
        if (control == wanted) {
            if ((code & DLGC_UNDEFPUSHBUTTON) != 0) {
                ::SendMessageA(control, BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
            }
        } else if ((code & DLGC_DEFPUSHBUTTON) != 0) {
            ::SendMessageA(control, BM_SETSTYLE, BS_PUSHBUTTON, TRUE);
        }
    }
}

HWND DefaultButton(HWND dialog) {
    const LRESULT answer = ::SendMessageA(dialog, DM_GETDEFID, 0, 0);
    if (HIWORD(static_cast<DWORD_PTR>(answer)) != DC_HASDEFID) return nullptr;
    return ::GetDlgItem(dialog, LOWORD(static_cast<DWORD_PTR>(answer)));
}

std::size_t PositionOf(const std::vector<HWND>& controls, HWND control) {
    for (std::size_t i = 0; i < controls.size(); ++i) {
        // The keyboard may be with a part of the control, as the field of a combo box is.
        if (controls[i] == control || ::IsChild(controls[i], control) != FALSE) return i;
    }
    return controls.size();
}

} // namespace

DialogState* DialogStateOf(HWND dialog) {
    const auto found = States().find(dialog);
    return found == States().end() ? nullptr : &found->second;
}

void AddDialogState(HWND dialog, DialogState state) {
    States().insert_or_assign(dialog, state);
}

void ForgetDialogState(HWND dialog) {
    const auto node = States().extract(dialog);
    if (!node.empty() && node.mapped().font != nullptr) ::DeleteObject(node.mapped().font);
}

std::vector<HWND> ControlsOf(HWND dialog) {
    std::vector<HWND> controls;
    CollectControls(dialog, controls);
    return controls;
}

bool IsUsable(HWND control) {
    return HasStyle(control, WS_VISIBLE) && !HasStyle(control, WS_DISABLED);
}

LRESULT DialogCode(HWND control) {
    return ::SendMessageA(control, WM_GETDLGCODE, 0, 0);
}

void FocusControl(HWND dialog, HWND control) {
    if (control == nullptr) return;
    const LRESULT code = DialogCode(control);
    ::SetFocus(control);
    if (::IsWindow(control) == FALSE) return;
    if ((code & DLGC_HASSETSEL) != 0) ::SendMessageA(control, EM_SETSEL, 0, -1);
    const bool is_button = (code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0;
    ShowDefault(dialog, is_button ? control : DefaultButton(dialog));
}

void RestoreFocus(HWND dialog) {
    HWND wanted = LastFocused(dialog);
    if (wanted == nullptr || !IsUsable(wanted)) {
        wanted = ::GetNextDlgTabItem(dialog, nullptr, FALSE);
        if (wanted != nullptr) {
            FocusControl(dialog, wanted);
            return;
        }
    }
    if (wanted != nullptr) ::SetFocus(wanted);
}

void PressById(HWND dialog, int id) {
    const HWND button = ::GetDlgItem(dialog, id);
    if (button != nullptr && HasStyle(button, WS_DISABLED)) {
        ::MessageBeep(0);
        return;
    }
    ::SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(static_cast<WORD>(id), BN_CLICKED),
                   reinterpret_cast<LPARAM>(button));
}

} // namespace kelvo::desktop

using namespace kelvo::desktop;

HWND GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous) {
    const std::vector<HWND> controls = ControlsOf(dialog);
    const std::size_t count = controls.size();
    const std::size_t from = PositionOf(controls, control);
    for (std::size_t step = 1; step <= count; ++step) {
        // Without a control, forwards begins at the first and backwards at the last.
        std::size_t at = 0;
        if (from == count) {
            at = previous != FALSE ? count - step : step - 1;
        } else {
            at = (previous != FALSE ? from + count - step : from + step) % count;
        }
        if (IsUsable(controls[at]) && HasStyle(controls[at], WS_TABSTOP)) return controls[at];
    }
    return control;
}

HWND GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous) {
    const std::vector<HWND> controls = ControlsOf(dialog);
    const std::size_t count = controls.size();
    const std::size_t from = PositionOf(controls, control);
    if (from == count) return control;
    std::size_t first = from;
    while (first > 0 && !HasStyle(controls[first], WS_GROUP))
        --first;
    std::size_t end = from + 1;
    while (end < count && !HasStyle(controls[end], WS_GROUP))
        ++end;
    const std::size_t size = end - first;
    for (std::size_t step = 1; step < size; ++step) {
        const std::size_t turn = previous != FALSE ? size - step : step;
        const HWND candidate = controls[first + (from - first + turn) % size];
        if (IsUsable(candidate) && (DialogCode(candidate) & DLGC_STATIC) == 0) return candidate;
    }
    return control;
}
