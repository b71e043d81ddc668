#include "framework/window/dialogs/ContextHelp.h"

#include "framework/window/tools/CLittleWin.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <cstdint>

namespace kelvo {
namespace {

constexpr UINT_PTR kRestTimer = 1966;
constexpr UINT kRestPeriod_ms = 100;
constexpr int kTicksOfRest = 6;
/// From a control's lower left corner to the tip that F1 shows.
constexpr POINT kBelowControl{8, 4};
/// From the pointer to the tip: beside the arrow, not under it.
constexpr LONG kBesidePointer = 20;

bool Contains(const RECT& area, POINT point) {
    return point.x >= area.left && point.x < area.right && point.y >= area.top &&
           point.y < area.bottom;
}

std::int64_t SizeOf(const RECT& area) {
    return std::int64_t{area.right - area.left} * (area.bottom - area.top);
}

} // namespace

ContextHelp::ContextHelp() = default;
ContextHelp::~ContextHelp() = default;

void ContextHelp::Register(int control_id, const CString& text) {
    if (text.IsEmpty()) {
        texts_.erase(control_id);
    } else {
        texts_[control_id] = text;
    }
}

bool ContextHelp::Explains(HWND control) const {
    return control != nullptr && texts_.contains(GetDlgCtrlID(control));
}

HWND ContextHelp::ExplainedAt(HWND dialog, POINT screen_point) const {
    HWND innermost = nullptr;
    RECT smallest{};
    for (const auto& [id, text] : texts_) {
        const HWND control = GetDlgItem(dialog, id);
        RECT area{};
        if (control == nullptr || IsWindowVisible(control) == FALSE) continue;
        if (GetWindowRect(control, &area) == FALSE || !Contains(area, screen_point)) continue;
        if (innermost != nullptr && SizeOf(area) >= SizeOf(smallest)) continue;
        innermost = control;
        smallest = area;
    }
    return innermost;
}

bool ContextHelp::Offer(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    KeepTimer(dialog, message);
    switch (message) {
    case WM_HELP:
        return OnHelpKey(dialog, lparam);
    case WM_TIMER:
        return wparam == kRestTimer && OnRestTimer(dialog);
    case WM_COMMAND: {
        const bool hides_only = wparam == 0 && lparam == 0 && ShowsTip();
        HideTip();
        return hides_only;
    }
    case WM_DESTROY:
        HideTip();
        return false;
    default:
        return false;
    }
}

/// The texts may be registered before the window is there and while it lives.
void ContextHelp::KeepTimer(HWND dialog, UINT message) {
    if (message == WM_DESTROY) {
        KillTimer(dialog, kRestTimer);
        timer_runs_ = false;
    } else if (message != WM_NCDESTROY && !timer_runs_ && HasTexts()) {
        timer_runs_ = SetTimer(dialog, kRestTimer, kRestPeriod_ms, nullptr) != 0;
    }
}

bool ContextHelp::OnHelpKey(HWND dialog, LPARAM help) {
    const auto& asked = *reinterpret_cast<const HELPINFO*>(help);
    const auto control = static_cast<HWND>(asked.hItemHandle);
    if (!Explains(control) || IsChild(dialog, control) == FALSE) return false;
    RECT area{};
    GetWindowRect(control, &area);
    ShowTip(control, {area.left + kBelowControl.x, area.bottom + kBelowControl.y});
    return true;
}

/// Shows the tip where the pointer rests, hides that tip when the pointer leaves its control.
bool ContextHelp::OnRestTimer(HWND dialog) {
    POINT point{};
    GetCursorPos(&point);
    const HWND focus = GetFocus();
    const bool is_active = focus == dialog || IsChild(dialog, focus) != FALSE;
    const HWND control =
        is_active && GetCapture() == nullptr ? ExplainedAt(dialog, point) : nullptr;
    if (control != rest_.control) {
        if (rest_.has_shown) HideTip();
        rest_ = {point, control, 0, false};
    } else if (control != nullptr && !rest_.has_shown) {
        const bool has_moved = point.x != rest_.point.x || point.y != rest_.point.y;
        rest_.ticks = has_moved ? 0 : rest_.ticks + 1;
        rest_.point = point;
        if (rest_.ticks == kTicksOfRest && !ShowsTip()) {
            ShowTip(control, {point.x + kBesidePointer, point.y + kBesidePointer});
            rest_.has_shown = true;
        }
    }
    return true;
}

bool ContextHelp::ShowsTip() const {
    return tip_ != nullptr && tip_->IsShown();
}

void ContextHelp::ShowTip(HWND control, POINT corner) {
    if (!Explains(control)) return;
    if (tip_ == nullptr) {
        tip_ = std::make_unique<CLittleWin>();
        tip_->SetDistance(0, 0);
    }
    tip_->SetHintText(texts_.at(GetDlgCtrlID(control)).Text());
    tip_->Show(corner.x, corner.y);
}

void ContextHelp::HideTip() {
    if (ShowsTip()) tip_->Hide();
}

} // namespace kelvo
