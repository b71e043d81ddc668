#include "framework/window/tools/CSubclassWin.h"

#include "framework/window/LUM.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr char kObjectProperty[] = "LUMSUBCLASSWNDPROC";
constexpr char kNotCreated[] = "CSubclassWin::Create() FALLITA!";

} // namespace

CSubclassWin::CSubclassWin(const char* control_class) : control_class_(control_class) {
    SetStyle(WS_VISIBLE);
}

CSubclassWin::~CSubclassWin() {
    // While the object is still one of this class: its last messages come through it.
    if (HasWindow()) DestroyWindow(Window());
}

int CSubclassWin::Create() {
    if (Instance() == nullptr) SetInstance(lum.Instance());
    const HWND parent = Parent() != nullptr ? Parent()->Window() : nullptr;
    SetStyle(parent != nullptr ? Style() | WS_CHILD : Style() & ~WS_CHILD);
    const HWND window =
        CreateWindowExA(ExtendedStyle(), control_class_.Text(), Title().Text(), Style(), Left(),
                        Top(), Width(), Height(), parent, nullptr, Instance(), nullptr);
    if (window == nullptr) return static_cast<int>(ErrorBox(kNotCreated));
    SetWindow(window);
    SetPropA(window, kObjectProperty, this);
    previous_procedure_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&SubclassWndProc)));
    MarkCreated();
    return 1;
}

bool CSubclassWin::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_DESTROY:
        SetWindowLongPtrA(Window(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous_procedure_));
        return CWin::HandleMessage(message, wparam, lparam);
    case WM_SIZE: {
        RECT outer{};
        GetWindowRect(Window(), &outer);
        StoreSize(outer.right - outer.left, outer.bottom - outer.top);
        return false;
    }
    case WM_ERASEBKGND:
        return CWin::HandleMessage(message, wparam, lparam);
    default:
        return false;
    }
}

LRESULT SubclassWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* const object = static_cast<CSubclassWin*>(GetPropA(window, kObjectProperty));
    if (object == nullptr) {
        MessageBeep(MB_ICONEXCLAMATION);
        return DefWindowProcA(window, message, wparam, lparam);
    }
    if (message == WM_DESTROY) RemovePropA(window, kObjectProperty);
    object->last_message_ = message;
    object->last_wparam_ = wparam;
    object->last_lparam_ = lparam;
    object->SetMessageResult(1);
    const WNDPROC previous = object->previous_procedure_;
    if (object->HandleMessage(message, wparam, lparam)) {
        // The handler may have deleted its object.
        return GetPropA(window, kObjectProperty) == object ? object->MessageResult() : 1;
    }
    // As they came: what the handler did may have brought other messages meanwhile.
    return CallWindowProcA(previous, window, message, wparam, lparam);
}

} // namespace kelvo
