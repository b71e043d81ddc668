// The loop that runs one window until it ends, keeping its owner's side inert meanwhile.

#include "framework/window/CDialog.h"
#include "framework/window/CWin.h"
#include "framework/window/LUM.h"
#include "framework/window/OwnerSide.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <algorithm>

namespace kelvo {
namespace {

void Dispatch(const MSG& message) {
    TranslateMessage(&message);
    DispatchMessageA(&message);
}

} // namespace

std::vector<HWND> CWin::OwnerSide(const CWin* owner) const {
    if (owner == nullptr) return {};
    if ((style_ & WS_CHILD) != 0) return AncestorsOf(window_);
    std::vector<HWND> side = AncestorsOf(owner->window_);
    side.insert(side.begin(), owner->window_);
    return side;
}

bool CWin::MayDispatch(const MSG& message, const CWin* owner,
                       const std::vector<HWND>& owner_side) const {
    const auto belongs_to = [&message](HWND window) {
        return message.hwnd == window || IsChild(window, message.hwnd) != FALSE;
    };
    if (owner == nullptr || belongs_to(window_)) return true;
    if (!belongs_to(owner->window_) && std::ranges::none_of(owner_side, belongs_to)) return true;
    switch (message.message) {
    case WM_PAINT:
    case kEndModalMessage: // of a window that runs below this one: it ends next
    case kEndDialogMessage:
        return true;
    case WM_LBUTTONDOWN:
    case WM_NCLBUTTONDOWN: // on its menu bar
        RefuseClick();
        return false;
    default:
        return false;
    }
}

void CWin::BeginModalLoop() {
    end_requested_ = false;
    end_result_ = 0;
    modal_running_ = true;
}

LPARAM CWin::ModalRun(CWin* owner) {
    if (!HasWindow()) {
        lum.ProcessMessages();
        if (instance_ == nullptr) instance_ = lum.Instance();
        parent_ = owner;
        if (Create() == 0) return 0; // the box has said why; there is nothing to wait for
    }
    const std::vector<HWND> owner_side = OwnerSide(owner);
    BeginModalLoop();
    {
        const HeldMenuBars held(owner_side);
        LoopUntilEnd(owner, owner_side);
    }
    EndModalLoop();
    if (HasWindow()) DestroyWindow(window_);
    return end_result_;
}

void CWin::LoopUntilEnd(const CWin* owner, const std::vector<HWND>& owner_side) {
    // A window that somebody destroyed will never post its end.
    while (!end_requested_ && HasWindow()) {
        MSG message{};
        const bool is_quit = GetMessageA(&message, nullptr, 0, 0) == 0;
        if (!is_quit && MayDispatch(message, owner, owner_side)) Dispatch(message);
        const bool is_end = message.hwnd == window_ && message.message == kEndModalMessage;
        if (is_end) RequestEnd(message.lParam);
    }
}

void CWin::EndModal(LPARAM result) {
    Post(kEndModalMessage, 0, result);
}

void CWin::Close() {
    if (modal_running_) {
        EndModal(0);
    } else {
        DestroyWindow(window_);
    }
}

void CWin::Quit() {
    PostQuitMessage(0);
}

} // namespace kelvo
