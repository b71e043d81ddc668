#pragma once
// What stays inert while a window or a dialog runs a loop of its own: its owner, and the windows
// above that.

#include "platform/desktop/windows.h"

#include <vector>

namespace kelvo {

/// The parent or owner of a window, the one above that, and so on.
std::vector<HWND> AncestorsOf(HWND window);

/// Keeps the menu bars of windows closed as long as it lives.
class HeldMenuBars {
public:
    explicit HeldMenuBars(std::vector<HWND> windows);
    HeldMenuBars(const HeldMenuBars&) = delete;
    HeldMenuBars& operator=(const HeldMenuBars&) = delete;
    ~HeldMenuBars();

private:
    std::vector<HWND> windows_;
};

/// What a click on the owner's side gets in place of its message.
void RefuseClick();

} // namespace kelvo
