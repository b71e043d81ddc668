// Windows from their creation to their destruction.

#include "platform/desktop/WindowLife.h"
#include "platform/base/resources.h"
#include "platform/desktop/Icons.h"
#include "platform/desktop/Input.h"
#include "platform/desktop/MessageQueue.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/UiLoop.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowMenus.h"
#include "platform/desktop/WindowPlacement.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowTitle.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/controls/ControlClass.h"
#include "platform/desktop/menus.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

using namespace kelvo::desktop;

namespace {

constexpr std::chrono::milliseconds kLongestTakeOver{500}; // of a window that nobody sees
constexpr std::chrono::milliseconds kTakeOverPoll{1};

/// What CreateWindowExA was asked for, its defaults filled in.
struct Creation {
    std::shared_ptr<const WindowClass> window_class;
    WindowKind kind = WindowKind::TopLevel;
    FrameRole role = FrameRole::Window;
    bool placed_by_desktop = false;
    CREATESTRUCTA asked{};
};

void FillInDefaults(Creation& creation) {
    CREATESTRUCTA& asked = creation.asked;
    if (creation.kind == WindowKind::TopLevel && asked.cx == CW_USEDEFAULT) {
        const QSize screen = QGuiApplication::primaryScreen()->availableSize();
        asked.cx = screen.width() * 3 / 4;
        asked.cy = screen.height() * 3 / 4;
    }
    creation.placed_by_desktop = creation.kind == WindowKind::TopLevel && asked.x == CW_USEDEFAULT;
    if (asked.x == CW_USEDEFAULT) asked.x = asked.y = 0;
    if (asked.y == CW_USEDEFAULT) asked.y = 0;
    if (asked.cx == CW_USEDEFAULT) asked.cx = 0;
    if (asked.cy == CW_USEDEFAULT) asked.cy = 0;
    asked.cx = std::clamp(asked.cx, 0, 8192);
    asked.cy = std::clamp(asked.cy, 0, 8192);
}

Qt::WindowFlags FlagsFor(DWORD style, DWORD extended_style, FrameRole role) {
    Qt::WindowFlags flags = role == FrameRole::Dialog ? Qt::Dialog : Qt::Window;
    const bool has_caption = (style & WS_CAPTION) == WS_CAPTION;
    // Left alone by the window manager: in its exact place at once, and never active.
    if (!has_caption && (extended_style & WS_EX_TOOLWINDOW) != 0) flags = Qt::ToolTip;
    if (has_caption) {
        flags |= Qt::CustomizeWindowHint | Qt::WindowTitleHint;
        if ((style & WS_SYSMENU) != 0)
            flags |= Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
        if ((style & WS_MINIMIZEBOX) != 0) flags |= Qt::WindowMinimizeButtonHint;
        if ((style & WS_MAXIMIZEBOX) != 0) flags |= Qt::WindowMaximizeButtonHint;
    } else {
        flags |= Qt::FramelessWindowHint;
    }
    if ((extended_style & WS_EX_TOPMOST) != 0) flags |= Qt::WindowStaysOnTopHint;
    return flags;
}

/// The desktop takes a new window over in its own time, and until then puts it where and as large
/// as it likes: what the program wishes meanwhile would be lost.
void WaitUntilShown(const FrameWidget& frame) {
    UiLoop* const loop = UiLoop::Instance();
    const auto deadline = std::chrono::steady_clock::now() + kLongestTakeOver;
    while (loop != nullptr && frame.isVisible() && !frame.windowHandle()->isExposed() &&
           std::chrono::steady_clock::now() < deadline) {
        loop->Step(Waiting::No);
        std::this_thread::sleep_for(kTakeOverPoll);
    }
}

HWND AddToTable(const Creation& creation) {
    const CREATESTRUCTA& asked = creation.asked;
    auto data = std::make_unique<WindowData>();
    data->kind = creation.kind;
    data->window_class = creation.window_class;
    data->queue = MessageQueue::OfThisThread();
    data->parent = asked.hwndParent;
    if (creation.kind == WindowKind::Child) {
        data->id = static_cast<int>(reinterpret_cast<INT_PTR>(asked.hMenu));
    }
    data->procedure = creation.window_class->values.lpfnWndProc;
    // Shown only at the end, so no paint message comes before WM_CREATE.
    data->style = static_cast<DWORD>(asked.style) & ~WS_VISIBLE;
    data->extended_style = asked.dwExStyle;
    data->rect = {asked.x, asked.y, asked.x + asked.cx, asked.y + asked.cy};
    data->extra.resize(static_cast<std::size_t>(creation.window_class->values.cbWndExtra));
    if (!IS_INTRESOURCE(asked.lpszName)) data->text = asked.lpszName;
    return LockedWindows().Add(std::move(data));
}

void MakeFrame(HWND window, WindowView& view, const Creation& creation) {
    const auto style = static_cast<DWORD>(creation.asked.style);
    FrameWidget* const owner = FrameOf(creation.asked.hwndParent);
    // The desktop keeps above its owner only what is a dialog.
    const bool is_owned = owner != nullptr && (style & WS_CAPTION) == WS_CAPTION;
    const FrameRole role = is_owned ? FrameRole::Dialog : creation.role;
    view.frame = new FrameWidget(FlagsFor(style, creation.asked.dwExStyle, role));
    if ((style & WS_CAPTION) != WS_CAPTION) {
        view.frame->SetBorder(FrameMarginsOf(style, false).left);
    }
    view.client = new ClientWidget(view.surface, view.frame);
    view.client->show(); // as soon as the frame is
    view.frame->SetClient(view.client);
    view.frame->setWindowIcon(IconBehind(creation.window_class->values.hIcon));
    if (!creation.placed_by_desktop) view.frame->move(creation.asked.x, creation.asked.y);
    view.frame->winId(); // the native window takes the topmost flag and the owner
    if (owner != nullptr) view.frame->windowHandle()->setTransientParent(owner->windowHandle());
    WatchWidget(view.frame, window);
}

ChildFrame FrameOfChild(const CREATESTRUCTA& asked) {
    if ((static_cast<DWORD>(asked.style) & WS_THICKFRAME) != 0) return ChildFrame::Sizing;
    return (asked.dwExStyle & WS_EX_STATICEDGE) != 0 ? ChildFrame::StaticEdge : ChildFrame::None;
}

void MakeWidgets(HWND window, const Creation& creation) {
    SIZE size{};
    {
        LockedWindows windows;
        size = windows.Find(window)->ClientSize();
    }
    const bool own_context = (creation.window_class->values.style & CS_OWNDC) != 0;
    WindowView view;
    view.surface = std::make_shared<Surface>(window, QSize(size.cx, size.cy),
                                             own_context ? OwnContext::Yes : OwnContext::No);
    RegisterSurface(view.surface);
    if (creation.kind == WindowKind::TopLevel) {
        MakeFrame(window, view, creation);
    } else {
        view.client = new ClientWidget(view.surface, WidgetOf(creation.asked.hwndParent));
        view.client->SetChildFrame(FrameOfChild(creation.asked));
        view.client->raise();
    }
    view.client->setCursor(CursorBehind(creation.window_class->values.hCursor));
    view.surface->Attach(view.client);
    view.surface->Invalidate(nullptr, Erase::Yes);
    WatchWidget(view.client, window);
    ClientWidget* const client = view.client;
    client->setEnabled((static_cast<DWORD>(creation.asked.style) & WS_DISABLED) == 0 ||
                       creation.kind == WindowKind::TopLevel);
    AddView(window, std::move(view));
    if (creation.window_class->make_control == nullptr) return;
    const ControlSetup setup{.window = window,
                             .parent = creation.asked.hwndParent,
                             .style = static_cast<DWORD>(creation.asked.style),
                             .extended_style = creation.asked.dwExStyle,
                             .instance = creation.asked.hInstance,
                             .title = creation.asked.lpszName,
                             .host = client};
    ViewOf(window)->control = creation.window_class->make_control(setup);
}

void AttachMenu(HWND window, const Creation& creation) {
    if (creation.kind == WindowKind::Child) return;
    HMENU menu = creation.asked.hMenu;
    const WNDCLASSA& values = creation.window_class->values;
    if (menu == nullptr && values.lpszMenuName != nullptr) {
        menu = ::LoadMenuA(values.hInstance, values.lpszMenuName);
    }
    if (menu != nullptr) ::SetMenu(window, menu);
}

/// @return whether the window's procedure wants it to live.
bool Announce(HWND window, Creation& creation) {
    const auto asked = reinterpret_cast<LPARAM>(&creation.asked);
    if (CallWindow(window, WM_NCCREATE, 0, asked) == 0) return false;
    ApplyTitle(window);
    return CallWindow(window, WM_CREATE, 0, asked) != -1;
}

std::optional<Creation> Prepare(LPCSTR class_name, DWORD style, HWND parent) {
    Creation creation;
    LockedWindows windows;
    creation.window_class = IS_INTRESOURCE(class_name) ? nullptr : windows.FindClass(class_name);
    if (!creation.window_class) return std::nullopt;
    const WindowData* above = windows.Find(parent);
    if (parent != nullptr && (above == nullptr || above->dying)) return std::nullopt;
    if ((style & WS_CHILD) != 0) {
        if (above == nullptr) return std::nullopt;
        // The desktop's children are top-level windows.
        if (above->kind != WindowKind::Desktop) creation.kind = WindowKind::Child;
    }
    return creation;
}

/// The window and all below it, each before its children.
void CollectBelow(HWND window, std::vector<HWND>& all) {
    all.push_back(window);
    std::vector<HWND> children;
    {
        LockedWindows windows;
        if (WindowData* data = windows.Find(window)) {
            data->dying = true;
            children = data->children;
        }
    }
    for (const HWND child : children)
        CollectBelow(child, all);
}

/// Once: the window above may have destroyed this one when its own turn came.
void SendDestroy(HWND window) {
    {
        LockedWindows windows;
        WindowData* data = windows.Find(window);
        if (data == nullptr || std::exchange(data->destroy_sent, true)) return;
    }
    CallWindow(window, WM_DESTROY, 0, 0);
}

void Bury(HWND window) {
    CallWindow(window, WM_NCDESTROY, 0, 0);
    if (const WindowView* view = ViewOf(window); view != nullptr && view->menu != nullptr) {
        ::DestroyMenu(view->menu);
    }
    ForgetInput(window);
    UnregisterSurface(window);
    RemoveView(window);
    LockedWindows().Remove(window);
    MessageQueue::OfThisThread()->Forget(window);
}

} // namespace

namespace kelvo::desktop {

HWND CreateWindowInRole(const CREATESTRUCTA& asked, FrameRole role) {
    if (!OnUiThread()) return nullptr;
    auto style = static_cast<DWORD>(asked.style);
    auto creation = Prepare(asked.lpszClass, style, asked.hwndParent);
    if (!creation) return nullptr;
    if ((style & (WS_CHILD | WS_POPUP)) == 0) style |= WS_CAPTION;
    creation->role = role;
    creation->asked = asked;
    creation->asked.style = static_cast<LONG>(style);
    FillInDefaults(*creation);
    const HWND window = AddToTable(*creation);
    MakeWidgets(window, *creation);
    AttachMenu(window, *creation);
    PlaceWidgets(window);
    if (!Announce(window, *creation)) {
        if (::IsWindow(window) != FALSE) ::DestroyWindow(window);
        return nullptr;
    }
    SendSize(window);
    SendMove(window);
    if ((style & WS_VISIBLE) != 0) ::ShowWindow(window, SW_SHOWNORMAL);
    return ::IsWindow(window) != FALSE ? window : nullptr;
}

} // namespace kelvo::desktop

HWND CreateWindowExA(DWORD extended_style, LPCSTR class_name, LPCSTR title, DWORD style, int x,
                     int y, int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                     LPVOID parameter) {
    return CreateWindowInRole({parameter, instance, menu, parent, height, width, y, x,
                               static_cast<LONG>(style), title, class_name, extended_style},
                              FrameRole::Window);
}

BOOL DestroyWindow(HWND window) {
    {
        LockedWindows windows;
        const WindowData* data = windows.Find(window);
        if (data == nullptr || data->kind == WindowKind::Desktop || data->destroy_sent)
            return FALSE;
        if (data->queue != MessageQueue::OfThisThreadIfAny()) return FALSE;
    }
    std::vector<HWND> all;
    CollectBelow(window, all);
    ::ShowWindow(window, SW_HIDE);
    for (const HWND each : all)
        SendDestroy(each);
    for (auto each = all.rbegin(); each != all.rend(); ++each)
        Bury(*each);
    return TRUE;
}

BOOL EnableWindow(HWND window, BOOL enable) {
    const auto call = [=]() -> LRESULT {
        bool was_disabled = false;
        {
            LockedWindows windows;
            WindowData* data = windows.Find(window);
            if (data == nullptr || data->kind == WindowKind::Desktop) return FALSE;
            was_disabled = (data->style & WS_DISABLED) != 0;
            data->style = enable != FALSE ? data->style & ~WS_DISABLED : data->style | WS_DISABLED;
        }
        if (was_disabled == (enable == FALSE)) return was_disabled;
        const WindowView* view = ViewOf(window);
        // Controls in a disabled top-level window do not turn grey.
        if (view != nullptr && view->client && !view->frame) {
            view->client->setEnabled(enable != FALSE);
        }
        CallWindow(window, WM_ENABLE, enable != FALSE ? TRUE : FALSE, 0);
        return was_disabled;
    };
    return static_cast<BOOL>(RunOnUiThread(call));
}

BOOL ShowWindow(HWND window, int command) {
    const bool show = command != SW_HIDE;
    const auto call = [=]() -> LRESULT {
        bool was_visible = false;
        {
            LockedWindows windows;
            WindowData* data = windows.Find(window);
            if (data == nullptr || data->kind == WindowKind::Desktop) return FALSE;
            was_visible = (data->style & WS_VISIBLE) != 0;
        }
        if (show == was_visible) return was_visible;
        CallWindow(window, WM_SHOWWINDOW, show ? 1 : 0, 0);
        const WindowView* view = ViewOf(window);
        if (view == nullptr) return was_visible; // the message destroyed it
        {
            LockedWindows windows;
            DWORD& style = windows.Find(window)->style;
            style = show ? style | WS_VISIBLE : style & ~WS_VISIBLE;
        }
        if (show) view->surface->Invalidate(nullptr, Erase::Yes);
        QWidget* const outermost =
            view->frame ? static_cast<QWidget*>(view->frame.data()) : view->client.data();
        outermost->setVisible(show);
        if (view->frame) {
            if (show) WaitUntilShown(*view->frame);
            OnFrameMoved(window);
        }
        WakeUiThread();
        return was_visible;
    };
    return static_cast<BOOL>(RunOnUiThread(call));
}
