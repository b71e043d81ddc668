#include "framework/window/dialogs/InPlaceEditing.h"

#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelvo {
namespace {

constexpr char kEditorProperty[] = "LUMINPLACEEDITING";
/// Room around the text of a label, for the editor's frame.
constexpr LONG kFrame = 3;
/// Posted to the editor by itself.
constexpr UINT kFinish = WM_USER + 100;
constexpr std::int32_t kLongestText = 65535;

CString WindowText(HWND window) {
    const LRESULT length = SendMessageA(window, WM_GETTEXTLENGTH, 0, 0);
    CString text;
    char* bytes =
        text.RawBuffer(static_cast<std::int32_t>(std::clamp<LRESULT>(length, 0, kLongestText)) + 1);
    if (bytes == nullptr) return text;
    GetWindowTextA(window, bytes, text.Capacity());
    text.Text(); // fixes the length
    return text;
}

CString ItemText(HWND list, int item) {
    const LRESULT length = SendMessageA(list, LB_GETTEXTLEN, static_cast<WPARAM>(item), 0);
    CString text;
    if (length < 0) return text;
    char* bytes = text.RawBuffer(static_cast<std::int32_t>(length) + 1);
    if (bytes == nullptr) return text;
    SendMessageA(list, LB_GETTEXT, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(bytes));
    text.Text();
    return text;
}

/// A rectangle of one window's client area in another's.
RECT Mapped(HWND from, HWND to, const RECT& area) {
    POINT corner{area.left, area.top};
    ClientToScreen(from, &corner);
    ScreenToClient(to, &corner);
    return {corner.x, corner.y, corner.x + area.right - area.left,
            corner.y + area.bottom - area.top};
}

} // namespace

InPlaceEditing::~InPlaceEditing() {
    End(Keep::No);
}

void InPlaceEditing::See(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_COMMAND: {
        const UINT begins = what_ == EditsInPlace::ListItems ? LBN_DBLCLK : STN_DBLCLK;
        const int id = LOWORD(wparam);
        if (HIWORD(wparam) == begins && lparam != 0 && editable_.contains(id)) {
            Begin(dialog, reinterpret_cast<HWND>(lparam));
        }
        return;
    }
    case WM_SIZE:
        End(Keep::Yes); // what it lay over has moved
        return;
    case WM_DESTROY:
        End(Keep::No);
        return;
    default:
        return;
    }
}

bool InPlaceEditing::Begin(HWND dialog, HWND control) {
    End(Keep::Yes);
    RECT area{};
    if (what_ == EditsInPlace::Labels) {
        GetClientRect(control, &area);
        area = Mapped(control, dialog, area);
        area = {area.left - kFrame, area.top - kFrame, area.right + kFrame, area.bottom + kFrame};
        return Place(dialog, control, area, WindowText(control));
    }
    item_ = static_cast<int>(SendMessageA(control, LB_GETCURSEL, 0, 0));
    if (item_ < 0) return false;
    const auto item = static_cast<WPARAM>(item_);
    if (SendMessageA(control, LB_GETITEMRECT, item, reinterpret_cast<LPARAM>(&area)) == LB_ERR) {
        return false;
    }
    area.top -= kFrame;
    area.bottom += kFrame;
    return Place(dialog, control, Mapped(control, dialog, area), ItemText(control, item_));
}

bool InPlaceEditing::Place(HWND dialog, HWND control, const RECT& area, const CString& text) {
    editor_ = CreateWindowExA(WS_EX_CLIENTEDGE, WC_EDIT, text.Text(),
                              WS_CHILD | WS_VISIBLE | WS_BORDER | ES_AUTOHSCROLL, area.left,
                              area.top, area.right - area.left, area.bottom - area.top, dialog,
                              nullptr, nullptr, nullptr);
    if (editor_ == nullptr) return false;
    control_ = control;
    focus_before_ = GetFocus();
    SetPropA(editor_, kEditorProperty, this);
    editor_before_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(editor_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&EditorProcedure)));
    SendMessageA(editor_, WM_SETFONT, static_cast<WPARAM>(SendMessageA(control, WM_GETFONT, 0, 0)),
                 FALSE);
    SendMessageA(editor_, EM_SETSEL, 0, -1);
    SetWindowPos(editor_, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    SetFocus(editor_);
    return true;
}

LRESULT InPlaceEditing::EditorProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* editing = static_cast<InPlaceEditing*>(GetPropA(window, kEditorProperty));
    if (editing == nullptr) return DefWindowProcA(window, message, wparam, lparam);
    const WNDPROC before = editing->editor_before_;
    switch (message) {
    case WM_GETDLGCODE: // Return and Escape are the editor's, not the dialog's buttons
        return CallWindowProcA(before, window, message, wparam, lparam) | DLGC_WANTALLKEYS;
    case WM_KEYDOWN:
        if (wparam != VK_RETURN && wparam != VK_ESCAPE && wparam != VK_TAB) break;
        editing->End(wparam == VK_ESCAPE ? Keep::No : Keep::Yes);
        return 0;
    case WM_KILLFOCUS:
        // The keyboard is on its way: the editor goes once it has arrived.
        PostMessageA(window, kFinish, 0, 0);
        break;
    case kFinish:
        editing->Finish(Keep::Yes);
        return 0;
    default:
        break;
    }
    return CallWindowProcA(before, window, message, wparam, lparam);
}

void InPlaceEditing::End(Keep keep) {
    if (editor_ == nullptr) return;
    // While the editor is still there, what was typed ahead goes over to where the keyboard was.
    if (GetFocus() == editor_) SetFocus(focus_before_);
    Finish(keep);
}

void InPlaceEditing::Finish(Keep keep) {
    const HWND editor = std::exchange(editor_, nullptr);
    if (editor == nullptr) return;
    if (IsWindow(editor) != FALSE) {
        if (keep == Keep::Yes) WriteBack(WindowText(editor));
        RemovePropA(editor, kEditorProperty);
        SetWindowLongPtrA(editor, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(editor_before_));
        DestroyWindow(editor);
    }
    control_ = nullptr;
}

void InPlaceEditing::WriteBack(const CString& text) const {
    if (what_ == EditsInPlace::Labels) {
        SetWindowTextA(control_, text.Text());
        return;
    }
    const auto item = static_cast<WPARAM>(item_);
    const LRESULT data = SendMessageA(control_, LB_GETITEMDATA, item, 0);
    SendMessageA(control_, LB_DELETESTRING, item, 0);
    SendMessageA(control_, LB_INSERTSTRING, item, reinterpret_cast<LPARAM>(text.Text()));
    SendMessageA(control_, LB_SETITEMDATA, item, data);
    SendMessageA(control_, LB_SETCURSEL, item, 0);
}

} // namespace kelvo
