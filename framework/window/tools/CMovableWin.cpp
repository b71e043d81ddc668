#include "framework/window/tools/CMovableWin.h"

#include "framework/window/LUM.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr int kBackgroundIndex = 7; // light grey
constexpr LONG kDefaultWidth = 500;
constexpr LONG kDefaultHeight = 300;

} // namespace

CMovableWin::CMovableWin() {
    SetStyle(WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_THICKFRAME);
    SetBackgroundColour(LUM::IndexColor(kBackgroundIndex));
    SetPaintBackground(true);
    SetSize(kDefaultWidth, kDefaultHeight);
}

int CMovableWin::Create() {
    const DWORD style = Style();
    // A bar that stays where it is has no edge to drag, and its buttons need the room.
    if (movable_ == 0) SetStyle(style & ~WS_THICKFRAME);
    const int created = CWin::Create();
    SetStyle(style);
    if (created != 0) InvalidateRect(Window(), nullptr, TRUE);
    return created;
}

bool CMovableWin::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CWin::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case WM_LBUTTONDOWN:
        if (movable_ == 0) return false;
        OnGrab();
        return true;
    case WM_MOUSEMOVE:
        if (dragging_ == 0) return false;
        OnDrag();
        return true;
    case WM_LBUTTONUP:
        if (dragging_ == 0) return false;
        ReleaseCapture(); // and so WM_CAPTURECHANGED
        dragging_ = 0;
        return true;
    case WM_CAPTURECHANGED:
        dragging_ = 0;
        return false;
    default:
        return false;
    }
}

void CMovableWin::OnGrab() {
    RECT own{};
    GetWindowRect(Window(), &own);
    POINT corner{own.left, own.top};
    if (const HWND parent = GetParent(Window())) ScreenToClient(parent, &corner);
    GetCursorPos(&last_pointer_);
    grab_offset_ = {corner.x - last_pointer_.x, corner.y - last_pointer_.y};
    SetCapture(Window());
    dragging_ = 1;
}

void CMovableWin::OnDrag() {
    if (movable_ == 0) return;
    RECT own{};
    GetWindowRect(Window(), &own);
    GetCursorPos(&last_pointer_);
    MoveWindow(Window(), grab_offset_.x + last_pointer_.x, grab_offset_.y + last_pointer_.y,
               own.right - own.left, own.bottom - own.top, TRUE);
}

} // namespace kelvo
