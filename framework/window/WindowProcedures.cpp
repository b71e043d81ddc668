#include "framework/window/WindowProcedures.h"

#include "framework/window/CWin.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

CWin* BoundObject(HWND window) {
    return reinterpret_cast<CWin*>(GetWindowLongPtrA(window, kObjectOffset));
}

CWin* CreationObject(LPARAM lparam) {
    return static_cast<CWin*>(reinterpret_cast<const CREATESTRUCTA*>(lparam)->lpCreateParams);
}

} // namespace

void BindWindow(HWND window, CWin* object) {
    SetWindowLongPtrA(window, kObjectOffset, reinterpret_cast<LONG_PTR>(object));
}

LRESULT CWinWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    CWin* object = nullptr;
    if (message == WM_NCCREATE) {
        object = CreationObject(lparam);
        BindWindow(window, object);
        if (object != nullptr) object->window_ = window;
    } else {
        object = BoundObject(window);
    }
    // Some messages arrive before the object is known.
    if (object == nullptr) return DefWindowProcA(window, message, wparam, lparam);
    object->message_result_ = 1;
    if (object->HandleMessage(message, wparam, lparam)) return object->message_result_;
    return DefWindowProcA(window, message, wparam, lparam);
}

LRESULT CDialogWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE) {
        SetWindowLongPtrA(window, kDialogObjectOffset,
                          reinterpret_cast<LONG_PTR>(CreationObject(lparam)));
    }
    return DefWindowProcA(window, message, wparam, lparam);
}

} // namespace kelvo
