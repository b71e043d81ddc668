// The loop that runs a dialog until it ends, keeping its owner's side inert meanwhile.

#include "framework/window/CDialog.h"
#include "framework/window/LUM.h"
#include "framework/window/OwnerSide.h"
#include "platform/desktop/dialogs.h"

#include <algorithm>
#include <utility>

namespace kelvo {
namespace {

constexpr std::uint32_t kOwnerStaysUnpainted = 1;

bool BelongsTo(HWND window, HWND whole) {
    return whole != nullptr && (window == whole || IsChild(whole, window) != FALSE);
}

void Dispatch(const MSG& message) {
    TranslateMessage(&message);
    DispatchMessageA(&message);
}

} // namespace

LPARAM CDialog::ModalRun(CWin* owner, LPCSTR resource_name) {
    if (resource_name != nullptr) resource_name_ = resource_name;
    return ModalRun(owner);
}

LPARAM CDialog::ModalRun(CWin* owner) {
    if (HasWindow()) return 0;
    modal_running_ = true;
    end_requested_ = false;
    end_result_ = 0;
    lum.ProcessMessages();
    if (Instance() == nullptr) SetInstance(lum.Instance());
    SetParent(owner);
    if (CreateDlg() != 0) LoopUntilEnd(owner);
    for (const HWND window : std::exchange(unpainted_, {}))
        InvalidateRect(window, nullptr, TRUE);
    modal_running_ = false;
    if (HasWindow()) DestroyWindow(Window());
    // The keyboard goes back to where it came from.
    if (owner != nullptr && owner->HasWindow() && GetFocus() == nullptr) SetFocus(owner->Window());
    return end_result_;
}

void CDialog::LoopUntilEnd(const CWin* owner) {
    const std::vector<HWND> owner_side =
        owner != nullptr ? AncestorsOf(Window()) : std::vector<HWND>{};
    const HeldMenuBars held(owner_side);
    // A window that somebody destroyed will never get its end message.
    while (!end_requested_ && HasWindow()) {
        MSG message{};
        const bool is_quit = GetMessageA(&message, nullptr, 0, 0) == 0;
        if (is_quit) continue;
        const bool is_end = message.hwnd == Window() && message.message == kEndDialogMessage;
        HandleModalMessage(message, owner, owner_side);
        if (is_end) OnEndMessage(message.lParam);
    }
}

void CDialog::ProcessMessages(const CWin* inert_owner) {
    const std::vector<HWND> owner_side =
        inert_owner != nullptr ? AncestorsOf(Window()) : std::vector<HWND>{};
    MSG message{};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        HandleModalMessage(message, inert_owner, owner_side);
    }
}

void CDialog::HandleModalMessage(MSG& message, const CWin* owner,
                                 const std::vector<HWND>& owner_side) {
    if (context_help_.ShowsTip() && message.message == WM_KEYDOWN && message.wParam != VK_SHIFT &&
        message.wParam != VK_CONTROL) {
        Post(WM_COMMAND, 0, 0); // hides the tip
        return;
    }
    if (PreTranslate(&message)) return;
    if (IsDialogMessageA(Window(), &message) != FALSE) return;
    if (owner == nullptr || BelongsTo(message.hwnd, Window())) {
        Dispatch(message);
        return;
    }
    const auto holds = [&message](HWND window) { return BelongsTo(message.hwnd, window); };
    if (holds(owner->Window()) || std::ranges::any_of(owner_side, holds)) {
        HandleOwnerMessage(message);
    } else {
        Dispatch(message);
    }
}

void CDialog::HandleOwnerMessage(const MSG& message) {
    switch (message.message) {
    case WM_PAINT:
        if ((options_ & kOwnerStaysUnpainted) == 0 && !context_help_.ShowsTip()) {
            DispatchMessageA(&message);
        } else {
            // Left invalid, it would be asked for again and again, and no timer would come.
            ValidateRect(message.hwnd, nullptr);
            if (std::ranges::find(unpainted_, message.hwnd) == unpainted_.end()) {
                unpainted_.push_back(message.hwnd);
            }
        }
        FocusBack();
        break;
    case WM_SYSCOMMAND:
    case kEndDialogMessage: // of a window that runs below this one: it ends next
    case kEndModalMessage:
        DispatchMessageA(&message);
        break;
    case WM_LBUTTONDOWN:
    case WM_NCLBUTTONDOWN: // on its menu bar
        RefuseClick();
        FocusBack();
        break;
    default:
        break;
    }
}

void CDialog::FocusBack() const {
    // A control that has the keyboard keeps it, and an open list of it stays open.
    if (HasWindow() && !BelongsTo(GetFocus(), Window())) SetFocus(Window());
}

void CDialog::OnEndMessage(LPARAM result) {
    // ProcessMessages or the loop of an open box may have taken it: the end is not lost with it.
    if (!modal_running_) {
        DestroyWindow(Window());
        return;
    }
    end_requested_ = true;
    end_result_ = result;
}

} // namespace kelvo
