#include "framework/window/OwnerSide.h"

#include "platform/desktop/menus.h"
#include "platform/desktop/messages.h"

#include <utility>

namespace kelvo {
namespace {

constexpr UINT kDefaultBeep = 0xFFFFFFFF;

} // namespace

std::vector<HWND> AncestorsOf(HWND window) {
    std::vector<HWND> ancestors;
    for (HWND parent = GetParent(window); parent != nullptr; parent = GetParent(parent)) {
        ancestors.push_back(parent);
    }
    return ancestors;
}

HeldMenuBars::HeldMenuBars(std::vector<HWND> windows) : windows_(std::move(windows)) {
    for (const HWND window : windows_)
        platform::HoldMenuBar(window, platform::MenuBarUse::Held);
}

HeldMenuBars::~HeldMenuBars() {
    for (const HWND window : windows_)
        platform::HoldMenuBar(window, platform::MenuBarUse::Released);
}

void RefuseClick() {
    MessageBeep(kDefaultBeep);
}

} // namespace kelvo
