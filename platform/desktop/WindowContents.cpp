// What is kept with a window (text, bytes, properties, relatives), and the default procedure.

#include "platform/base/threads.h"
#include "platform/desktop/Input.h"
#include "platform/desktop/MessageQueue.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/UiLoop.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowFrames.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowTitle.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/controls/ControlClass.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <QApplication>

#include <algorithm>
#include <cstring>

using namespace kelvo::desktop;

namespace kelvo::desktop {

void ApplyTitle(HWND window) {
    const WindowView* view = ViewOf(window);
    if (view == nullptr || !view->client) return;
    QString title;
    {
        LockedWindows windows;
        title = QString::fromStdString(windows.Find(window)->text);
    }
    if (!view->frame) {
        if (!view->control) view->client->setAccessibleName(title);
        return;
    }
    // A lone "[*]" is the toolkit's mark for an unsaved document; twice means the three characters.
    view->frame->setWindowTitle(title.replace(QLatin1String("[*]"), QLatin1String("[*][*]")));
}

} // namespace kelvo::desktop

namespace {

std::string TextOf(HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    return data == nullptr ? std::string() : data->text;
}

LRESULT SetText(HWND window, LPCSTR text) {
    {
        LockedWindows windows;
        WindowData* data = windows.Find(window);
        if (data == nullptr) return FALSE;
        data->text = text == nullptr ? "" : text;
    }
    ApplyTitle(window);
    return TRUE;
}

LONG_PTR SetStyle(HWND window, DWORD style) {
    DWORD before = 0;
    {
        LockedWindows windows;
        WindowData* data = windows.Find(window);
        if (data == nullptr || data->kind == WindowKind::Desktop) return 0;
        before = std::exchange(data->style, style);
    }
    const WindowView* view = OnUiThread() ? ViewOf(window) : nullptr;
    if (view != nullptr && view->control) view->control->OnStyleChanged(before, style);
    return static_cast<LONG_PTR>(before);
}

LRESULT CopyText(HWND window, std::size_t capacity, LPSTR buffer) {
    if (capacity == 0 || buffer == nullptr) return 0;
    const std::string text = TextOf(window);
    const std::size_t length = std::min(text.size(), capacity - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    return static_cast<LRESULT>(length);
}

LRESULT EraseBackground(HWND window, HDC dc) {
    const HBRUSH brush = ClassBrushOf(window);
    RECT area{};
    if (brush == nullptr || ::GetClientRect(window, &area) == FALSE) return FALSE;
    return ::FillRect(dc, &area, brush) != 0 ? TRUE : FALSE;
}

LRESULT PaintNothing(HWND window) {
    PAINTSTRUCT paint{};
    if (::BeginPaint(window, &paint) != nullptr) ::EndPaint(window, &paint);
    return 0;
}

std::byte* ExtraAt(WindowData& data, int index) {
    const bool inside =
        index >= 0 && static_cast<std::size_t>(index) + sizeof(LONG_PTR) <= data.extra.size();
    return inside ? data.extra.data() + index : nullptr;
}

} // namespace

LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_NCCREATE:
        return TRUE;
    case WM_CLOSE:
        ::DestroyWindow(window);
        return 0;
    case WM_ERASEBKGND:
        return EraseBackground(window, reinterpret_cast<HDC>(wparam));
    case WM_PAINT:
        return PaintNothing(window);
    case WM_SETTEXT:
        return SetText(window, reinterpret_cast<LPCSTR>(lparam));
    case WM_GETTEXT:
        return CopyText(window, wparam, reinterpret_cast<LPSTR>(lparam));
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(TextOf(window).size());
    case WM_NCLBUTTONDOWN:
        SizeByMouse(window, wparam);
        return 0;
    case WM_MOUSEWHEEL: {
        const HWND parent = ::GetParent(window);
        const bool is_child = (::GetWindowLongPtrA(window, GWL_STYLE) & LONG_PTR{WS_CHILD}) != 0;
        return is_child && parent != nullptr ? ::SendMessageA(parent, message, wparam, lparam) : 0;
    }
    case WM_IME_COMPOSITION:
        PostComposedText(window);
        return 0;
    default:
        return 0;
    }
}

LRESULT CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wparam,
                        LPARAM lparam) {
    return procedure == nullptr ? 0 : procedure(window, message, wparam, lparam);
}

BOOL SetWindowTextA(HWND window, LPCSTR text) {
    if (::IsWindow(window) == FALSE) return FALSE;
    return ::SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) != 0 ? TRUE
                                                                                      : FALSE;
}

int GetWindowTextA(HWND window, LPSTR text, int capacity) {
    if (text == nullptr || capacity <= 0) return 0;
    *text = '\0';
    return static_cast<int>(::SendMessageA(window, WM_GETTEXT, static_cast<WPARAM>(capacity),
                                           reinterpret_cast<LPARAM>(text)));
}

BOOL IsWindow(HWND window) {
    return LockedWindows().Find(window) != nullptr ? TRUE : FALSE;
}

BOOL IsWindowEnabled(HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    return data != nullptr && (data->style & WS_DISABLED) == 0 ? TRUE : FALSE;
}

int GetClassNameA(HWND window, LPSTR name, int capacity) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    if (data == nullptr || !data->window_class || name == nullptr || capacity <= 0) return 0;
    const std::string& whole = data->window_class->name;
    const std::size_t length = std::min(whole.size(), static_cast<std::size_t>(capacity) - 1);
    std::memcpy(name, whole.data(), length);
    name[length] = '\0';
    return static_cast<int>(length);
}

BOOL IsWindowVisible(HWND window) {
    return LockedWindows().IsVisible(window) ? TRUE : FALSE;
}

HWND GetParent(HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    if (data == nullptr || windows.Find(data->parent) == nullptr) return nullptr;
    return data->parent == windows.Desktop() ? nullptr : data->parent;
}

BOOL IsChild(HWND parent, HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    while (data != nullptr && data->kind == WindowKind::Child) {
        if (data->parent == parent) return TRUE;
        data = windows.Find(data->parent);
    }
    return FALSE;
}

HWND GetDesktopWindow() {
    return LockedWindows().Desktop();
}

LONG_PTR GetWindowLongPtrA(HWND window, int index) {
    LockedWindows windows;
    WindowData* data = windows.Find(window);
    if (data == nullptr) return 0;
    switch (index) {
    case GWLP_WNDPROC:
        return reinterpret_cast<LONG_PTR>(data->procedure);
    case GWL_STYLE:
        return static_cast<LONG_PTR>(data->style);
    case GWL_EXSTYLE:
        return static_cast<LONG_PTR>(data->extended_style);
    default:
        break;
    }
    LONG_PTR value = 0;
    // Offset 30 is misaligned for a pointer.
    if (const std::byte* extra = ExtraAt(*data, index)) std::memcpy(&value, extra, sizeof value);
    return value;
}

LONG_PTR SetWindowLongPtrA(HWND window, int index, LONG_PTR value) {
    if (index == GWL_STYLE) return SetStyle(window, static_cast<DWORD>(value));
    LockedWindows windows;
    WindowData* data = windows.Find(window);
    if (data == nullptr || data->kind == WindowKind::Desktop) return 0;
    switch (index) {
    case GWLP_WNDPROC: {
        if (value == 0) return 0;
        const auto before = reinterpret_cast<LONG_PTR>(data->procedure);
        data->procedure = reinterpret_cast<WNDPROC>(value);
        return before;
    }
    case GWL_EXSTYLE:
        return static_cast<LONG_PTR>(
            std::exchange(data->extended_style, static_cast<DWORD>(value)));
    default:
        break;
    }
    std::byte* const extra = ExtraAt(*data, index);
    if (extra == nullptr) return 0;
    LONG_PTR before = 0;
    std::memcpy(&before, extra, sizeof before);
    std::memcpy(extra, &value, sizeof value);
    return before;
}

BOOL SetPropA(HWND window, LPCSTR name, HANDLE value) {
    LockedWindows windows;
    WindowData* data = windows.Find(window);
    if (data == nullptr || name == nullptr) return FALSE;
    data->properties[name] = value;
    return TRUE;
}

HANDLE GetPropA(HWND window, LPCSTR name) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    if (data == nullptr || name == nullptr) return nullptr;
    const auto found = data->properties.find(name);
    return found == data->properties.end() ? nullptr : found->second;
}

HANDLE RemovePropA(HWND window, LPCSTR name) {
    LockedWindows windows;
    WindowData* data = windows.Find(window);
    if (data == nullptr || name == nullptr) return nullptr;
    const auto node = data->properties.extract(name);
    return node.empty() ? nullptr : node.mapped();
}

BOOL InvalidateRect(HWND window, const RECT* rect, BOOL erase) {
    kelvo::platform::ThreadCheckpoint();
    const auto surface = SurfaceOf(window);
    if (!surface) return FALSE;
    surface->Invalidate(rect, erase != FALSE ? Erase::Yes : Erase::No);
    WakeUiThread();
    return TRUE;
}

BOOL ValidateRect(HWND window, const RECT* rect) {
    const auto surface = SurfaceOf(window);
    if (!surface) return FALSE;
    surface->Validate(rect);
    return TRUE;
}

BOOL UpdateWindow(HWND window) {
    const auto surface = SurfaceOf(window);
    if (!surface) return FALSE;
    if (surface->NeedsPaint() && ::IsWindowVisible(window) != FALSE) {
        ::SendMessageA(window, WM_PAINT, 0, 0);
    }
    return TRUE;
}

BOOL MessageBeep(UINT /*type*/) {
    if (!OnUiThread()) return FALSE;
    QApplication::beep();
    return TRUE;
}
