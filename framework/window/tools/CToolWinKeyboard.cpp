// How the keyboard works the buttons of a tool window. A button cannot be drawn otherwise while it
// has the keyboard; its tip shows where the keyboard is.

#include "framework/window/tools/CToolWin.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr std::int32_t kNoButton = -1;

} // namespace

bool CToolWin::TakeKeyboard() {
    return MoveKeyboard(kNoButton, 1);
}

bool CToolWin::HasKeyboard() const {
    return ButtonWithKeyboard() != kNoButton;
}

std::int32_t CToolWin::ButtonWithKeyboard() const {
    const HWND focus = GetFocus();
    for (std::int32_t i = 0; i < buttons_.Count(); ++i) {
        const auto& button = static_cast<CButtonInfo*>(buttons_.At(i))->button;
        if (focus != nullptr && button && button->Window() == focus) return i;
    }
    return kNoButton;
}

/// To the next button in a direction that a person could press, beginning anew at the end.
bool CToolWin::MoveKeyboard(std::int32_t from, std::int32_t step) {
    const std::int32_t count = buttons_.Count();
    for (std::int32_t i = 1; i <= count; ++i) {
        const std::int32_t number = (from + step * i + 2 * count) % count;
        const auto& button = static_cast<CButtonInfo*>(buttons_.At(number))->button;
        if (!button || IsWindowVisible(button->Window()) == FALSE ||
            IsWindowEnabled(button->Window()) == FALSE) {
            continue;
        }
        SetFocus(button->Window());
        return true;
    }
    return false;
}

bool CToolWin::OnKey(WPARAM key, LPARAM lparam) {
    switch (key) {
    case VK_RIGHT:
    case VK_DOWN:
        return MoveKeyboard(ButtonWithKeyboard(), 1);
    case VK_LEFT:
    case VK_UP:
        return MoveKeyboard(ButtonWithKeyboard(), -1);
    case VK_ESCAPE:
        if (Parent() != nullptr) SetFocus(Parent()->Window());
        return true;
    default: // a button takes no key away from the window around
        if (Parent() != nullptr) Parent()->Post(WM_KEYDOWN, key, lparam);
        return true;
    }
}

} // namespace kelvo
