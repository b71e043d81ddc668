#include "framework/window/tools/BitmapButton.h"

#include "framework/window/CDc.h"
#include "framework/window/tools/ButtonFaces.h"
#include "framework/window/tools/ButtonTip.h"
#include "platform/desktop/accessibility.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr LPARAM kWasDown = LPARAM{1} << 30; // in WM_KEYDOWN

} // namespace

BitmapButton::BitmapButton(std::int32_t command_id, ButtonKind kind, HBITMAP normal,
                           HBITMAP pressed)
    : CWin(kClassId), command_id_(command_id), kind_(kind), normal_image_(normal),
      pressed_image_(pressed) {
    SetStyle(WS_CHILD | WS_VISIBLE);
    SetExtendedStyle(WS_EX_TOOLWINDOW);
    const SIZE size = button_faces::SizeOf(pressed);
    SetPlacement(0, 0, size.cx, size.cy);
}

BitmapButton::~BitmapButton() {
    // While the object is still a button: its last messages end its tip.
    if (HasWindow()) DestroyWindow(Window());
}

bool BitmapButton::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (forwards_ != 0) {
        const HWND window = Window();
        Report(message, lparam);
        if (window != nullptr && IsWindow(window) == FALSE) return false; // so is the object
    }
    if (CWin::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case WM_NCCREATE: // before anything can ask what the window is
        Describe();
        return false;
    case WM_PAINT:
        return OnPaint();
    case WM_LBUTTONDOWN:
        button_tip::Stop(*this);
        return OnLeftDown();
    case WM_LBUTTONUP:
        button_tip::Stop(*this);
        return OnLeftUp();
    case WM_CAPTURECHANGED:
        return OnCaptureLost(reinterpret_cast<HWND>(lparam));
    case WM_MOUSEMOVE:
        button_tip::OnPointerMoved(*this);
        return true;
    case WM_TIMER:
        if (wparam != kTipTimer) return false;
        button_tip::OnTick(*this);
        return true;
    case WM_KEYDOWN:
        return OnKeyDown(wparam, lparam);
    case WM_SETFOCUS:
        button_tip::ShowForKeyboard(*this);
        Describe();
        return false;
    case WM_KILLFOCUS:
        button_tip::Stop(*this);
        Describe();
        return false;
    case WM_ENABLE:
        Repaint();
        return false;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP:
    case WM_DESTROY:
        button_tip::Stop(*this);
        return false;
    default:
        return false;
    }
}

void BitmapButton::Repaint() const {
    InvalidateRect(Window(), nullptr, FALSE);
    Describe();
}

void BitmapButton::Describe() const {
    platform::DescribeButton(Window(), {.toggles = kind_ == ButtonKind::Toggle,
                                        .is_down = pressed_ != 0,
                                        .has_keyboard = GetFocus() == Window()});
}

void BitmapButton::Report(UINT message, LPARAM lparam) {
    if (Parent() == nullptr) return;
    last_message_ = {message, lparam, this};
    // A copy: the report may bring the next message.
    ButtonMessage report = last_message_;
    Parent()->Send(kButtonMessage, static_cast<WPARAM>(command_id_),
                   reinterpret_cast<LPARAM>(&report));
}

bool BitmapButton::OnPaint() {
    const HBITMAP image = pressed_ != 0 ? pressed_image_ : normal_image_;
    const SIZE size = button_faces::SizeOf(pressed_image_);
    CDc dc;
    dc.BeginPaint(*this);
    if (IsWindowEnabled(Window()) != FALSE) {
        button_faces::Draw(dc.Context(), image, size);
    } else if (const HBITMAP grey = button_faces::Greyed(dc.Context(), image)) {
        button_faces::Draw(dc.Context(), grey, size);
        DeleteObject(grey);
    }
    dc.EndPaint(*this);
    SetWindowPos(Window(), nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER);
    return true;
}

bool BitmapButton::OnLeftDown() {
    if (kind_ == ButtonKind::Toggle) {
        pressed_ = pressed_ != 0 ? 0 : 1;
        PostClick();
    } else {
        pressed_ = 1;
        SetCapture(Window());
    }
    Repaint();
    return true;
}

bool BitmapButton::OnLeftUp() {
    // A press elsewhere that ends here is none of this button's.
    if (kind_ == ButtonKind::Toggle || GetCapture() != Window()) return true;
    pressed_ = 0;
    ReleaseCapture();
    Repaint();
    PostClick();
    return true;
}

bool BitmapButton::OnCaptureLost(HWND taken_by) {
    if (kind_ == ButtonKind::Push && taken_by != nullptr && taken_by != Window()) {
        pressed_ = 0;
        Repaint();
    }
    return false;
}

bool BitmapButton::OnKeyDown(WPARAM key, LPARAM lparam) {
    const bool presses = (key == VK_SPACE || key == VK_RETURN) &&
                         IsWindowVisible(Window()) != FALSE && IsWindowEnabled(Window()) != FALSE;
    if (!presses) {
        // Posted: what the key means there may remove this button.
        if (Parent() != nullptr) Parent()->Post(WM_KEYDOWN, key, lparam);
        return true;
    }
    if ((lparam & kWasDown) != 0) return true; // a key that is held presses once
    button_tip::Stop(*this);
    if (kind_ == ButtonKind::Toggle) return OnLeftDown();
    PostClick();
    return true;
}

void BitmapButton::PostClick() {
    if (Parent() == nullptr) return;
    Parent()->Post(kButtonClicked, static_cast<WPARAM>(command_id_),
                   reinterpret_cast<LPARAM>(this));
}

} // namespace kelvo
