#include "framework/window/WindowProcedures.h"

#include "framework/window/CDialog.h"
#include "framework/window/CWin.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

CWin* BoundObject(HWND window) {
    return reinterpret_cast<CWin*>(GetWindowLongPtrA(window, kObjectOffset));
}

CDialog* BoundDialog(HWND window) {
    return reinterpret_cast<CDialog*>(GetWindowLongPtrA(window, kDialogObjectOffset));
}

template <class Object>
Object* CreationObject(LPARAM lparam) {
    return static_cast<Object*>(reinterpret_cast<const CREATESTRUCTA*>(lparam)->lpCreateParams);
}

} // namespace

void BindWindow(HWND window, CWin* object) {
    SetWindowLongPtrA(window, kObjectOffset, reinterpret_cast<LONG_PTR>(object));
}

LRESULT CWinWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    CWin* object = nullptr;
    if (message == WM_NCCREATE) {
        object = CreationObject<CWin>(lparam);
        BindWindow(window, object);
        if (object != nullptr) object->window_ = window;
    } else {
        object = BoundObject(window);
    }
    // Some messages arrive before the object is known.
    if (object == nullptr) return DefWindowProcA(window, message, wparam, lparam);
    object->message_result_ = 1;
    if (!object->HandleMessage(message, wparam, lparam)) {
        return DefWindowProcA(window, message, wparam, lparam);
    }
    // The handler may have deleted its object.
    return BoundObject(window) == object ? object->message_result_ : 1;
}

void BindDialog(HWND window, CDialog* object) {
    SetWindowLongPtrA(window, kDialogObjectOffset, reinterpret_cast<LONG_PTR>(object));
}

INT_PTR LumDlgProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        auto* const bound = reinterpret_cast<CDialog*>(lparam);
        BindDialog(window, bound);
        if (bound != nullptr) {
            bound->SetWindow(window);
            // From here on the handler may end the dialog, and its WM_DESTROY counts.
            bound->MarkCreated();
        }
    }
    CDialog* const object = BoundDialog(window);
    if (object == nullptr) return FALSE;
    object->SetMessageResult(1);
    if (!object->HandleMessage(message, wparam, lparam)) return FALSE;
    // The handler may have deleted its object.
    return BoundDialog(window) == object ? object->MessageResult() : TRUE;
}

LRESULT CDialogWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE) BindDialog(window, CreationObject<CDialog>(lparam));
    CDialog* const object = BoundDialog(window);
    if (object != nullptr) {
        object->SetMessageResult(1);
        if (object->HandleClassMessage(message, wparam, lparam)) {
            return BoundDialog(window) == object ? object->MessageResult() : 1;
        }
    }
    return DefDlgProcA(window, message, wparam, lparam);
}

} // namespace kelvo
