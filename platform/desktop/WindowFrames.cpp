#include "platform/desktop/WindowFrames.h"

#include "platform/desktop/WindowTable.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <algorithm>

namespace kelvo::desktop {

namespace {

constexpr int kCorner = 16; ///< so near to a corner, an edge sizes both ways
constexpr int kSmallestSide = 16;

struct Outline {
    RECT outer{}; ///< on the screen
    RECT inner{}; ///< client area, on the screen
};

bool Contains(const RECT& rect, POINT point) {
    return point.x >= rect.left && point.x < rect.right && point.y >= rect.top &&
           point.y < rect.bottom;
}

/// @return nothing unless the window is a child with a frame, or a visible frame of our own.
std::optional<Outline> OutlineOf(LockedWindows& windows, HWND window) {
    const WindowData* data = windows.Find(window);
    if (data == nullptr || !windows.IsVisible(window)) return std::nullopt;
    const FrameMargins margins = data->Margins();
    const bool drawn_by_us =
        data->kind == WindowKind::Child || (data->style & WS_CAPTION) != WS_CAPTION;
    if (!drawn_by_us || margins.left == 0) return std::nullopt;
    const POINT origin = windows.ClientOrigin(window);
    const SIZE size = data->ClientSize();
    const RECT inner{origin.x, origin.y, origin.x + size.cx, origin.y + size.cy};
    const RECT outer{inner.left - margins.left, inner.top - margins.top,
                     inner.right + margins.right, inner.bottom + margins.bottom};
    return Outline{outer, inner};
}

WPARAM PartAt(const Outline& outline, POINT point, bool sizes) {
    if (!sizes) return HTBORDER;
    const bool left = point.x < outline.outer.left + kCorner;
    const bool right = point.x >= outline.outer.right - kCorner;
    const bool top = point.y < outline.outer.top + kCorner;
    const bool bottom = point.y >= outline.outer.bottom - kCorner;
    if (top) return left ? HTTOPLEFT : right ? HTTOPRIGHT : HTTOP;
    if (bottom) return left ? HTBOTTOMLEFT : right ? HTBOTTOMRIGHT : HTBOTTOM;
    return left ? HTLEFT : HTRIGHT;
}

std::optional<FrameHit> HitOn(LockedWindows& windows, HWND window, POINT point) {
    const auto outline = OutlineOf(windows, window);
    if (!outline || !Contains(outline->outer, point) || Contains(outline->inner, point)) {
        return std::nullopt;
    }
    const bool sizes = (windows.Find(window)->style & WS_THICKFRAME) != 0;
    return FrameHit{window, PartAt(*outline, point, sizes)};
}

bool Moves(WPARAM part, std::initializer_list<WPARAM> parts) {
    return std::ranges::find(parts, part) != parts.end();
}

/// The rectangle with the edges that the part stands for moved along.
RECT Sized(RECT rect, WPARAM part, POINT by) {
    if (Moves(part, {HTLEFT, HTTOPLEFT, HTBOTTOMLEFT})) {
        rect.left = std::min(rect.left + by.x, rect.right - kSmallestSide);
    }
    if (Moves(part, {HTRIGHT, HTTOPRIGHT, HTBOTTOMRIGHT})) {
        rect.right = std::max(rect.right + by.x, rect.left + kSmallestSide);
    }
    if (Moves(part, {HTTOP, HTTOPLEFT, HTTOPRIGHT})) {
        rect.top = std::min(rect.top + by.y, rect.bottom - kSmallestSide);
    }
    if (Moves(part, {HTBOTTOM, HTBOTTOMLEFT, HTBOTTOMRIGHT})) {
        rect.bottom = std::max(rect.bottom + by.y, rect.top + kSmallestSide);
    }
    return rect;
}

/// As SetWindowPos takes it: a child's in its parent's client area.
std::optional<RECT> PlaceOf(HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    const bool sizes = data != nullptr && (data->style & WS_THICKFRAME) != 0 &&
                       (data->kind == WindowKind::Child || (data->style & WS_CAPTION) == 0);
    if (!sizes) return std::nullopt;
    return data->rect;
}

} // namespace

std::optional<FrameHit> FrameHitAt(HWND window, QPoint on_screen) {
    const POINT point{on_screen.x(), on_screen.y()};
    LockedWindows windows;
    if (auto own = HitOn(windows, window, point)) return own;
    const WindowData* data = windows.Find(window);
    if (data == nullptr) return std::nullopt;
    for (auto child = data->children.rbegin(); child != data->children.rend(); ++child) {
        const WindowData* below = windows.Find(*child);
        if (below == nullptr || below->kind != WindowKind::Child) continue;
        if (auto hit = HitOn(windows, *child, point)) return hit;
    }
    return std::nullopt;
}

void SizeByMouse(HWND window, WPARAM part) {
    const auto before = PlaceOf(window);
    POINT start{};
    if (!before || part < HTLEFT || part > HTBOTTOMRIGHT || ::GetCursorPos(&start) == FALSE) return;
    ::SetCapture(window);
    MSG message{};
    while (::GetCapture() == window) {
        const BOOL got = ::GetMessageA(&message, nullptr, 0, 0);
        if (got <= 0) {
            ::ReleaseCapture();
            if (got == 0) ::PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        if (message.hwnd != window || message.message < WM_MOUSEMOVE ||
            message.message > WM_MBUTTONDBLCLK) {
            ::TranslateMessage(&message);
            ::DispatchMessageA(&message);
        } else if (message.message == WM_LBUTTONUP) {
            ::ReleaseCapture();
        } else if (message.message == WM_MOUSEMOVE) {
            const RECT now = Sized(*before, part, {message.pt.x - start.x, message.pt.y - start.y});
            ::SetWindowPos(window, nullptr, now.left, now.top, now.right - now.left,
                           now.bottom - now.top, SWP_NOZORDER);
        }
    }
}

} // namespace kelvo::desktop
