#pragma once
// The area beside the file dialog that shows a film's first image, or a crossed box where there is
// none.

#include "framework/window/CWin.h"
#include "media/NewCBitmaplum.h"

namespace kelvo {

class CDc;

class PreviewView : public CWin {
public:
    /// Shows the image, fitted into the area.
    void Show(NewCBitmaplum picture);
    /// Shows the crossed box.
    void ShowPlaceholder();
    bool IsValid() const { return valid_; }
    /// How many pixels of the image make one of the area; meaningless without an image.
    float Scale() const { return scale_; }
    /// The image's size as it is drawn, cut to whole pixels.
    SIZE DrawnSize() const;

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    bool OnPaint();
    void DrawFilmImage(HDC context) const;
    void DrawPlaceholder(const CDc& dc) const;

    NewCBitmaplum picture_;
    float scale_ = 1.0F;
    bool valid_ = false;
};

} // namespace kelvo
