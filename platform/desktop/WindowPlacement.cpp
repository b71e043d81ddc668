#include "platform/desktop/WindowPlacement.h"

#include "platform/base/threads.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/UiLoop.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <QWindow>

#include <algorithm>
#include <utility>

namespace kelvo::desktop {

namespace {

// Beyond every screen, and still a surface that can be allocated.
constexpr int kLargestSide = 8192;

QSize ToQt(SIZE size) {
    return {size.cx, size.cy};
}

bool Equal(SIZE a, SIZE b) {
    return a.cx == b.cx && a.cy == b.cy;
}

/// The two strips that a growing client area has gained, or all of it, as the class wants it.
void InvalidateForSize(HWND window, SIZE before, SIZE now) {
    UINT style = 0;
    {
        LockedWindows windows;
        const WindowData* data = windows.Find(window);
        if (data != nullptr && data->window_class) style = data->window_class->values.style;
    }
    const bool all = ((style & CS_HREDRAW) != 0 && before.cx != now.cx) ||
                     ((style & CS_VREDRAW) != 0 && before.cy != now.cy);
    if (all) {
        ::InvalidateRect(window, nullptr, TRUE);
        return;
    }
    const RECT right{before.cx, 0, now.cx, now.cy};
    const RECT bottom{0, before.cy, now.cx, now.cy};
    if (now.cx > before.cx) ::InvalidateRect(window, &right, TRUE);
    if (now.cy > before.cy) ::InvalidateRect(window, &bottom, TRUE);
}

struct Placement {
    RECT rect{};
    SIZE client{};
    QPoint client_offset; ///< from the corner of rect to the client area
};

Placement PlacementFrom(const WindowData& data) {
    const FrameMargins margins = data.Margins();
    return {data.rect, data.ClientSize(), QPoint(margins.left, margins.top)};
}

std::optional<Placement> PlacementOf(HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    if (data == nullptr || data->kind == WindowKind::Desktop) return std::nullopt;
    return PlacementFrom(*data);
}

RECT NewRect(const RECT& old, int x, int y, int width, int height, UINT flags) {
    if ((flags & SWP_NOMOVE) != 0) {
        x = old.left;
        y = old.top;
    }
    if ((flags & SWP_NOSIZE) != 0) {
        width = old.right - old.left;
        height = old.bottom - old.top;
    }
    x = std::clamp(x, -kLargestSide, kLargestSide);
    y = std::clamp(y, -kLargestSide, kLargestSide);
    return {x, y, x + std::clamp(width, 0, kLargestSide), y + std::clamp(height, 0, kLargestSide)};
}

void SetTopmost(HWND window, bool topmost) {
    const WindowView* view = ViewOf(window);
    if (view == nullptr || !view->frame) return;
    // Changing the widget's own flags would hide a window that is shown; behind the back of one
    // that is not shown yet, the widget would not come to be shown at all.
    if (view->frame->isVisible()) {
        view->frame->windowHandle()->setFlag(Qt::WindowStaysOnTopHint, topmost);
    } else {
        view->frame->setWindowFlag(Qt::WindowStaysOnTopHint, topmost);
    }
    LockedWindows windows;
    if (WindowData* data = windows.Find(window)) {
        data->extended_style =
            topmost ? data->extended_style | WS_EX_TOPMOST : data->extended_style & ~WS_EX_TOPMOST;
    }
}

bool Restack(HWND window, HWND after) {
    const WindowView* view = ViewOf(window);
    QWidget* const outermost =
        view->frame ? static_cast<QWidget*>(view->frame.data()) : view->client.data();
    if (after == HWND_TOPMOST || after == HWND_NOTOPMOST) {
        SetTopmost(window, after == HWND_TOPMOST);
        // No window manager puts a tool window above the others.
        if (after == HWND_TOPMOST && outermost->windowType() == Qt::ToolTip) outermost->raise();
        return true;
    }
    if (after == HWND_TOP) {
        outermost->raise();
        return true;
    }
    if (after == HWND_BOTTOM) {
        outermost->lower();
        return true;
    }
    QWidget* const sibling = WidgetOf(after);
    if (sibling == nullptr || view->frame || sibling->parentWidget() != outermost->parentWidget()) {
        return false;
    }
    outermost->stackUnder(sibling);
    return true;
}

BOOL SetWindowPosOnUiThread(HWND window, HWND after, const RECT& wanted, UINT flags) {
    const auto before = PlacementOf(window);
    if (!before) return FALSE;
    if ((flags & SWP_NOZORDER) == 0 && !Restack(window, after)) return FALSE;
    Placement now;
    {
        LockedWindows windows;
        WindowData* data = windows.Find(window);
        data->rect = wanted;
        now = PlacementFrom(*data);
    }
    PlaceWidgets(window);
    if (!Equal(before->client, now.client)) InvalidateForSize(window, before->client, now.client);
    const bool moved = before->rect.left != now.rect.left || before->rect.top != now.rect.top;
    if (moved) SendMove(window);
    if (!Equal(before->client, now.client)) SendSize(window);
    if ((flags & SWP_SHOWWINDOW) != 0) ::ShowWindow(window, SW_SHOW);
    return TRUE;
}

} // namespace

void PlaceWidgets(HWND window) {
    const WindowView* view = ViewOf(window);
    const auto placement = PlacementOf(window);
    if (view == nullptr || !placement || !view->client) return;
    const QSize client = ToQt(placement->client);
    view->surface->Resize(client);
    const QPoint corner(placement->rect.left, placement->rect.top);
    if (!view->frame) {
        view->client->Place(QRect(corner + placement->client_offset, client));
        return;
    }
    if (view->frame->pos() != corner) view->frame->move(corner);
    view->frame->ResizeClient(client);
    const QPoint origin = view->client->mapToGlobal(QPoint(0, 0));
    LockedWindows windows;
    if (WindowData* data = windows.Find(window)) data->client_origin = {origin.x(), origin.y()};
}

void OnFrameMoved(HWND window) {
    const WindowView* view = ViewOf(window);
    if (view == nullptr || !view->frame || !view->frame->isVisible()) return;
    const QPoint corner = view->frame->pos();
    const QPoint origin = view->client->mapToGlobal(QPoint(0, 0));
    bool moved = false;
    {
        LockedWindows windows;
        WindowData* data = windows.Find(window);
        if (data == nullptr) return;
        data->client_origin = {origin.x(), origin.y()};
        RECT& rect = data->rect;
        moved = rect.left != corner.x() || rect.top != corner.y();
        const SIZE size{rect.right - rect.left, rect.bottom - rect.top};
        rect = {corner.x(), corner.y(), corner.x() + size.cx, corner.y() + size.cy};
    }
    if (moved) SendMove(window);
}

void OnFrameResized(HWND window) {
    const WindowView* view = ViewOf(window);
    if (view == nullptr || !view->frame || !view->client) return;
    const QSize room = view->frame->RoomForClient();
    SIZE before{};
    const SIZE now{room.width(), room.height()};
    {
        LockedWindows windows;
        WindowData* data = windows.Find(window);
        if (data == nullptr) return;
        before = data->ClientSize();
        if (Equal(before, now)) return; // the echo of our own
        const FrameMargins margins = FrameMarginsOf(data->style, data->has_menu);
        data->rect.right = data->rect.left + now.cx + margins.left + margins.right;
        data->rect.bottom = data->rect.top + now.cy + margins.top + margins.bottom;
    }
    view->surface->Resize(room);
    view->client->resize(room);
    view->frame->LayOut();
    InvalidateForSize(window, before, now);
    SendSize(window);
}

void AdaptClient(HWND window) {
    const WindowView* view = ViewOf(window);
    const auto placement = PlacementOf(window);
    if (view == nullptr || !placement) return;
    const QSize before = view->surface->Size();
    PlaceWidgets(window);
    if (before == ToQt(placement->client)) return;
    InvalidateForSize(window, {before.width(), before.height()}, placement->client);
    SendSize(window);
}

void SendMove(HWND window) {
    POINT corner{};
    {
        LockedWindows windows;
        const WindowData* data = windows.Find(window);
        if (data == nullptr) return;
        const FrameMargins margins = data->Margins();
        corner = data->kind == WindowKind::Child
                     ? POINT{data->rect.left + margins.left, data->rect.top + margins.top}
                     : data->client_origin;
    }
    CallWindow(window, WM_MOVE, 0,
               MAKELPARAM(static_cast<DWORD_PTR>(corner.x), static_cast<DWORD_PTR>(corner.y)));
}

void SendSize(HWND window) {
    const auto placement = PlacementOf(window);
    if (!placement) return;
    const SIZE client = placement->client;
    CallWindow(window, WM_SIZE, 0,
               MAKELPARAM(static_cast<DWORD_PTR>(client.cx), static_cast<DWORD_PTR>(client.cy)));
}

} // namespace kelvo::desktop

using namespace kelvo::desktop;

BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags) {
    kelvo::platform::ThreadCheckpoint();
    const auto call = [=]() -> LRESULT {
        const auto now = PlacementOf(window);
        if (!now) return FALSE;
        return SetWindowPosOnUiThread(window, after, NewRect(now->rect, x, y, width, height, flags),
                                      flags);
    };
    return static_cast<BOOL>(RunOnUiThread(call));
}

BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint) {
    if (::SetWindowPos(window, nullptr, x, y, width, height, SWP_NOZORDER) == FALSE) return FALSE;
    if (repaint != FALSE && OnUiThread()) ::UpdateWindow(window);
    return TRUE;
}

BOOL GetWindowRect(HWND window, RECT* rect) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    if (data == nullptr || rect == nullptr) return FALSE;
    *rect = data->rect;
    if (data->kind == WindowKind::Child) {
        const POINT origin = windows.ClientOrigin(data->parent);
        *rect = {rect->left + origin.x, rect->top + origin.y, rect->right + origin.x,
                 rect->bottom + origin.y};
    }
    return TRUE;
}

BOOL GetClientRect(HWND window, RECT* rect) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    if (data == nullptr || rect == nullptr) return FALSE;
    const SIZE size = data->ClientSize();
    *rect = {0, 0, size.cx, size.cy};
    return TRUE;
}

BOOL AdjustWindowRectEx(RECT* rect, DWORD style, BOOL menu, DWORD /*extended_style*/) {
    if (rect == nullptr) return FALSE;
    const FrameMargins margins = FrameMarginsOf(style, menu != FALSE);
    rect->left -= margins.left;
    rect->top -= margins.top;
    rect->right += margins.right;
    rect->bottom += margins.bottom;
    return TRUE;
}

BOOL ScreenToClient(HWND window, POINT* point) {
    LockedWindows windows;
    if (windows.Find(window) == nullptr || point == nullptr) return FALSE;
    const POINT origin = windows.ClientOrigin(window);
    *point = {point->x - origin.x, point->y - origin.y};
    return TRUE;
}

BOOL ClientToScreen(HWND window, POINT* point) {
    LockedWindows windows;
    if (windows.Find(window) == nullptr || point == nullptr) return FALSE;
    const POINT origin = windows.ClientOrigin(window);
    *point = {point->x + origin.x, point->y + origin.y};
    return TRUE;
}
