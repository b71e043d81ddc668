// What keys mean in a dialog.

#include "platform/base/message_boxes.h"
#include "platform/desktop/MessageQueue.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/dialogs/DialogState.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include <string>

using namespace kelvo::desktop;

namespace {

constexpr std::size_t kMostMnemonicText = 256;

bool IsShiftDown(const MSG& message) {
    const auto input = MessageQueue::OfThisThread()->InputBehind(message);
    const Qt::KeyboardModifiers held = input && input->isInputEvent()
                                           ? static_cast<const QInputEvent&>(*input).modifiers()
                                           : QGuiApplication::keyboardModifiers();
    return held.testFlag(Qt::ShiftModifier);
}

char Lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// The letter that is underlined in a control's text, 0 for none; "&&" is a plain ampersand.
char MnemonicOf(HWND control) {
    char text[kMostMnemonicText];
    const int length = ::GetWindowTextA(control, text, sizeof text);
    for (int i = 0; i + 1 < length; ++i) {
        if (text[i] != '&') continue;
        ++i;
        if (text[i] != '&') return Lower(text[i]);
    }
    return '\0';
}

bool HasMnemonic(HWND control) {
    const LRESULT code = DialogCode(control);
    if ((code & DLGC_STATIC) != 0) {
        return (::GetWindowLongPtrA(control, GWL_STYLE) & LONG_PTR{SS_NOPREFIX}) == 0;
    }
    return (code & DLGC_BUTTON) != 0;
}

void Activate(HWND dialog, HWND control) {
    const LRESULT code = DialogCode(control);
    if ((code & DLGC_STATIC) != 0) {
        FocusControl(dialog, ::GetNextDlgTabItem(dialog, control, FALSE));
        return;
    }
    FocusControl(dialog, control);
    ::SendMessageA(control, BM_CLICK, 0, 0);
}

/// The next control after the one with the keyboard that has this letter underlined.
bool PressMnemonic(HWND dialog, char letter) {
    const std::vector<HWND> controls = ControlsOf(dialog);
    const HWND focus = ::GetFocus();
    std::size_t from = 0;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        if (controls[i] == focus || ::IsChild(controls[i], focus) != FALSE) from = i + 1;
    }
    for (std::size_t step = 0; step < controls.size(); ++step) {
        const HWND control = controls[(from + step) % controls.size()];
        if (!IsUsable(control) || !HasMnemonic(control)) continue;
        if (MnemonicOf(control) != Lower(letter)) continue;
        Activate(dialog, control);
        return true;
    }
    return false;
}

void MoveInGroup(HWND dialog, bool previous) {
    const HWND focus = ::GetFocus();
    const HWND next = ::GetNextDlgGroupItem(dialog, focus, previous ? TRUE : FALSE);
    if (next == nullptr || next == focus || next == dialog) return;
    FocusControl(dialog, next);
    const LONG_PTR kind = ::GetWindowLongPtrA(next, GWL_STYLE) & 0xF;
    if ((DialogCode(next) & DLGC_RADIOBUTTON) != 0 && kind == BS_AUTORADIOBUTTON) {
        ::SendMessageA(next, BM_CLICK, 0, 0);
    }
}

void PressEnter(HWND dialog, HWND control) {
    const LRESULT code = control == dialog ? 0 : DialogCode(control);
    if ((code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0) {
        // A button of a page reports to the page.
        PressById(::GetParent(control), ::GetDlgCtrlID(control));
        return;
    }
    const LRESULT answer = ::SendMessageA(dialog, DM_GETDEFID, 0, 0);
    const bool has_default = HIWORD(static_cast<DWORD_PTR>(answer)) == DC_HASDEFID;
    PressById(dialog, has_default ? LOWORD(static_cast<DWORD_PTR>(answer)) : IDOK);
}

void AskForHelp(HWND dialog, const MSG& message) {
    HELPINFO help{};
    help.cbSize = sizeof help;
    help.iContextType = HELPINFO_WINDOW;
    help.iCtrlId = ::GetDlgCtrlID(message.hwnd);
    help.hItemHandle = message.hwnd;
    help.MousePos = message.pt;
    ::SendMessageA(dialog, WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
}

/// @return whether the key meant something to the dialog.
bool HandleKey(HWND dialog, const MSG& message, LRESULT wanted) {
    switch (message.wParam) {
    case VK_TAB:
        if ((wanted & DLGC_WANTTAB) != 0) return false;
        ::SendMessageA(dialog, WM_NEXTDLGCTL, IsShiftDown(message) ? 1 : 0, 0);
        return true;
    case VK_LEFT:
    case VK_UP:
    case VK_RIGHT:
    case VK_DOWN:
        if ((wanted & DLGC_WANTARROWS) != 0) return false;
        MoveInGroup(dialog, message.wParam == VK_LEFT || message.wParam == VK_UP);
        return true;
    case VK_RETURN:
        PressEnter(dialog, message.hwnd);
        return true;
    case VK_ESCAPE:
        PressById(dialog, IDCANCEL);
        return true;
    case VK_F1:
        AskForHelp(dialog, message);
        return true;
    default:
        return false;
    }
}

/// Of WM_CHAR a character, of the others a key's number, where what are small letters in characters
/// are function keys.
bool IsLetterOrDigit(const MSG& message) {
    const WPARAM key = message.wParam;
    if (key >= 'a' && key <= 'z') return message.message == WM_CHAR;
    return (key >= 'A' && key <= 'Z') || (key >= '0' && key <= '9');
}

bool HandleInput(HWND dialog, MSG& message) {
    const LRESULT wanted = ::SendMessageA(message.hwnd, WM_GETDLGCODE, message.wParam,
                                          reinterpret_cast<LPARAM>(&message));
    if ((wanted & DLGC_WANTALLKEYS) != 0) return false;
    if (message.message == WM_KEYDOWN) return HandleKey(dialog, message, wanted);
    const bool is_plain = message.message == WM_CHAR;
    if (is_plain && (wanted & DLGC_WANTCHARS) != 0) return false;
    return IsLetterOrDigit(message) && PressMnemonic(dialog, static_cast<char>(message.wParam));
}

} // namespace

BOOL IsDialogMessageA(HWND dialog, MSG* message) {
    if (message == nullptr || ::IsWindow(dialog) == FALSE) return FALSE;
    if (message->hwnd != dialog && ::IsChild(dialog, message->hwnd) == FALSE) return FALSE;
    const bool is_key = message->message == WM_KEYDOWN || message->message == WM_CHAR ||
                        message->message == WM_SYSKEYDOWN;
    if (is_key && HandleInput(dialog, *message)) return TRUE;
    ::TranslateMessage(message);
    ::DispatchMessageA(message);
    return TRUE;
}
