// Registered window classes.

#include "platform/base/resources.h"
#include "platform/desktop/WindowTable.h"

using namespace kelvo::desktop;

namespace {

constexpr int kMostExtraBytes = 4096;

bool IsSound(const WNDCLASSA& values) {
    return values.lpfnWndProc != nullptr && values.lpszClassName != nullptr &&
           !IS_INTRESOURCE(values.lpszClassName) && *values.lpszClassName != '\0' &&
           values.cbClsExtra >= 0 && values.cbClsExtra <= kMostExtraBytes &&
           values.cbWndExtra >= 0 && values.cbWndExtra <= kMostExtraBytes;
}

} // namespace

ATOM RegisterClassA(const WNDCLASSA* window_class) {
    if (window_class == nullptr || !IsSound(*window_class)) return 0;
    const auto made = std::make_shared<WindowClass>();
    made->values = *window_class;
    made->name = window_class->lpszClassName;
    made->values.lpszClassName = made->name.c_str();
    if (!IS_INTRESOURCE(window_class->lpszMenuName)) {
        made->menu_name = window_class->lpszMenuName;
        made->values.lpszMenuName = made->menu_name.c_str();
    }
    return LockedWindows().AddClass(made) ? made->atom : ATOM{0};
}

BOOL UnregisterClassA(LPCSTR class_name, HINSTANCE /*instance*/) {
    if (IS_INTRESOURCE(class_name)) return FALSE;
    return LockedWindows().RemoveClass(class_name) ? TRUE : FALSE;
}
