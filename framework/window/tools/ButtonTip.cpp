#include "framework/window/tools/ButtonTip.h"

#include "framework/window/tools/BitmapButton.h"
#include "framework/window/tools/CLittleWin.h"
#include "platform/desktop/messages.h"

namespace kelvo::button_tip {
namespace {

constexpr UINT kTickPeriodMs = 50;
constexpr int kTicksToShow = 11;

struct PendingTip {
    HWND window = nullptr; ///< of the button whose timer runs; none when none does
    POINT pointer{};
    int ticks = 0; ///< on which the pointer had not moved
};

PendingTip pending;
HWND keyboard_tip = nullptr; ///< the button whose tip is shown because it has the keyboard

bool IsOver(HWND window, POINT point) {
    RECT area{};
    return GetWindowRect(window, &area) != FALSE && IsWindowVisible(window) != FALSE &&
           point.x >= area.left && point.x < area.right && point.y >= area.top &&
           point.y < area.bottom;
}

} // namespace

void OnPointerMoved(const BitmapButton& button) {
    if (button.TipText().IsEmpty()) return;
    // A window that is gone has taken its timer along.
    if (pending.window != nullptr && IsWindow(pending.window) != FALSE) return;
    POINT pointer{};
    GetCursorPos(&pointer);
    pending = {button.Window(), pointer, 0};
    SetTimer(button.Window(), kTipTimer, kTickPeriodMs, nullptr);
}

void OnTick(const BitmapButton& button) {
    if (pending.window != button.Window()) return;
    POINT pointer{};
    GetCursorPos(&pointer);
    if (!IsOver(button.Window(), pointer)) {
        Stop(button);
        return;
    }
    const bool has_moved = pointer.x != pending.pointer.x || pointer.y != pending.pointer.y;
    if (has_moved) {
        pending.pointer = pointer;
        return;
    }
    CLittleWin& tip = CLittleWin::ButtonTips();
    if (tip.IsShown() || ++pending.ticks != kTicksToShow) return;
    tip.SetHintText(button.TipText().Text());
    tip.Show(pointer.x, pointer.y);
}

void ShowForKeyboard(const BitmapButton& button) {
    if (pending.window != nullptr) KillTimer(pending.window, kTipTimer);
    pending = {};
    if (button.TipText().IsEmpty()) return;
    RECT area{};
    GetWindowRect(button.Window(), &area);
    keyboard_tip = button.Window();
    CLittleWin& tip = CLittleWin::ButtonTips();
    tip.SetHintText(button.TipText().Text());
    tip.Show(area.left, area.bottom);
}

void Stop(const BitmapButton& button) {
    if (keyboard_tip != nullptr && keyboard_tip == button.Window()) {
        CLittleWin::ButtonTips().Hide();
        keyboard_tip = nullptr;
    }
    if (pending.window == nullptr || pending.window != button.Window()) return;
    KillTimer(pending.window, kTipTimer);
    // The hint window is made with the first tip: nothing to hide before.
    if (pending.ticks >= kTicksToShow) CLittleWin::ButtonTips().Hide();
    pending = {};
}

} // namespace kelvo::button_tip
