#pragma once
// A child window that the user can drag about in its parent, and the base of the tool windows.

#include "framework/window/CWin.h"

namespace kelvo {

/// A grey child of 500 by 300. While it is movable it has a sizing frame and follows the mouse that
/// drags it; otherwise it has no frame, so that its buttons stand where they are put.
class CMovableWin : public CWin {
public:
    CMovableWin();
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    /// Makes the window and has it repainted at once.
    int Create() override;

    /// Before Create for the frame; dragging may be switched at any time.
    void SetMovable(bool movable) { movable_ = movable ? 1 : 0; }
    bool IsMovable() const { return movable_ != 0; }
    bool IsDragged() const { return dragging_ != 0; }

private:
    void OnGrab();
    void OnDrag();

    BYTE movable_ = 0;
    BYTE dragging_ = 0;
    POINT grab_offset_{};  ///< from the pointer on the screen to the corner in the parent
    POINT last_pointer_{}; ///< on the screen
};

} // namespace kelvo
