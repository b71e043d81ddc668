#include "framework/window/dialogs/ToolTipTracking.h"

#include "framework/window/LUM.h"
#include "framework/window/dialogs/ContextHelp.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

namespace kelvo {
namespace {

/// Buttons and modifier keys in wParam of a mouse message.
constexpr WPARAM kHeldDown = 0x1F;
constexpr LONG kTipDistance = 20;

} // namespace

void ToolTipTracking::Clear() {
    tracking_ = false;
    explained_ = nullptr;
}

void ToolTipTracking::Begin(HWND dialog) {
    if (!help_.HasTexts()) return;
    help_.HideTip();
    explained_ = nullptr;
    tracking_ = true;
    // A button that this was called from is about to let the mouse go: the capture comes with the
    // move, which also explains what the pointer is over already.
    POINT point{};
    GetCursorPos(&point);
    ScreenToClient(dialog, &point);
    PostMessageA(dialog, WM_MOUSEMOVE, 0,
                 MAKELPARAM(static_cast<DWORD_PTR>(point.x), static_cast<DWORD_PTR>(point.y)));
}

void ToolTipTracking::End() {
    help_.HideTip();
    Clear();
    ReleaseCapture();
}

bool ToolTipTracking::HandleMessage(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    if (!tracking_) return false;
    switch (message) {
    case WM_MOUSEMOVE:
        return OnMouseMove(dialog, wparam,
                           {static_cast<short>(LOWORD(static_cast<DWORD_PTR>(lparam))),
                            static_cast<short>(HIWORD(static_cast<DWORD_PTR>(lparam)))});
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_MBUTTONDOWN:
    case WM_DESTROY:
        End();
        return false;
    default:
        return false;
    }
}

bool ToolTipTracking::OnMouseMove(HWND dialog, WPARAM held, POINT point) {
    if ((held & kHeldDown) != 0) {
        End();
        return false;
    }
    RECT client{};
    GetClientRect(dialog, &client);
    const bool is_over =
        point.x >= 0 && point.y >= 0 && point.x < client.right && point.y < client.bottom;
    ClientToScreen(dialog, &point);
    Explain(is_over ? help_.ExplainedAt(dialog, point) : nullptr, point);
    // Outside, the mouse belongs to whatever is there; the next move over the dialog takes it back.
    if (!is_over) {
        ReleaseCapture();
    } else if (GetCapture() != dialog) {
        SetCapture(dialog);
    }
    return true;
}

void ToolTipTracking::Explain(HWND control, POINT screen_point) {
    if (control == explained_) return;
    help_.HideTip();
    lum.ProcessMessages();
    if (!tracking_) return; // what was queued may have ended it
    explained_ = control;
    if (control == nullptr) return;
    help_.ShowTip(control, {screen_point.x + kTipDistance, screen_point.y + kTipDistance});
}

} // namespace kelvo
