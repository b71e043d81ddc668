#pragma once
// The small yellow hint window of tool tips and position read-outs: always on top, never active.

#include "framework/base/CString.h"
#include "framework/window/CWin.h"

namespace kelvo {

class CLittleWin final : public CWin {
public:
    /// Registers the class the first time and makes the hidden window; boxes say what failed.
    CLittleWin();
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

    /// The hints of buttons and those of button menus; made when first asked for.
    static CLittleWin& ButtonTips();
    static CLittleWin& MenuTips();

    /// Shows the text beside a point of the screen: right of it and below, or on the other side
    /// where the screen ends.
    void Show(LONG x, LONG y);
    void Hide();
    bool IsShown() const { return shown_ != 0; }

    /// A text wider than the box widens it.
    void SetHintText(const char* text);
    const CString& HintText() const { return text_; }
    /// Size of the box, 100 by 16 at first.
    void SetBoxSize(LONG width, LONG height);
    /// From the point to the box; 10 and 10 at first.
    void SetDistance(LONG horizontal, LONG vertical);
    /// Where it was last shown.
    POINT Anchor() const { return anchor_; }

private:
    bool OnPaint();
    void FitBox();

    CString text_ = "  ";
    BYTE shown_ = 0;
    LONG wished_width_;
    LONG box_width_;
    LONG box_height_;
    LONG horizontal_distance_;
    LONG vertical_distance_;
    POINT anchor_{};
};

} // namespace kelvo
