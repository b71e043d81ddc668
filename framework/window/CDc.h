#pragma once
// A device context and what the framework does with one: an off-screen bitmap for drawing without
// flicker, pictures placed and scaled, text in the two standard fonts, lines and simple shapes.
// Whoever obtains a context (BeginPaint, GetWindowDc, MakeCompatible) gives it back by the
// matching call; an attached one stays its owner's.

#include "framework/base/CObj.h"
#include "platform/desktop/drawing.h"

namespace kelvo {

class CString;
class CWin;

/// Where and how a picture goes into a rectangle. Without Stretch or NoScale it is fitted, keeping
/// its shape; without a place for one direction it goes to the right or to the bottom.
enum DrawFlags : UINT {
    kDrawNoScale = 1,
    kDrawStretch = 4,
    kDrawReplaceBackground = 8,
    kDrawLeft = 16,
    kDrawCentre = 32,
    kDrawTop = 128,
    kDrawMiddle = 256,
};

/// Style of the standard fixed font.
enum FixedFontFlags : UINT {
    kFontUnderline = 1,
    kFontItalic = 2,
    kFontStrikeOut = 4,
};

class CDc : public CObj {
public:
    static constexpr std::uint32_t kClassId = 19030100;

    CDc();
    explicit CDc(HDC context);
    CDc(const CDc&) = delete;
    CDc& operator=(const CDc&) = delete;
    /// Drops the off-screen bitmap, if any.
    ~CDc() override;

    HDC Context() const { return context_; }
    const PAINTSTRUCT& Paint() const { return paint_; }

    HDC BeginPaint(const CWin& window);
    void EndPaint(const CWin& window);
    HDC GetWindowDc(const CWin& window);
    void ReleaseWindowDc(const CWin& window);
    /// For a context that somebody else gives and takes back, such as WM_ERASEBKGND's.
    void Attach(HDC context) { context_ = context; }

    /// Becomes an off-screen context with a bitmap of the given size; drops an earlier bitmap.
    bool MakeCompatible(const CDc& other, LONG width, LONG height);
    /// The same in the size of the window's client area.
    bool MakeCompatible(const CWin& window);
    /// Copies the whole off-screen bitmap to (0, 0) of the target.
    bool CopyTo(CDc& target) const;
    /// Copies the area's size from (0, 0) of the off-screen bitmap to the area of the target.
    bool CopyTo(CDc& target, LONG x, LONG y, LONG width, LONG height) const;
    /// Puts the replaced bitmap back and deletes the off-screen bitmap and the context.
    void Release();

    void DrawBitmap(HBITMAP bitmap, LONG x, LONG y) const;
    /// Draws with the background, as the corners tell it, turned into a colour. The bitmap itself
    /// stays changed.
    void DrawBitmap(HBITMAP bitmap, LONG x, LONG y, COLORREF replacement) const;
    /// @param flags   DrawFlags
    /// @param colour  for kDrawReplaceBackground
    void DrawBitmap(HBITMAP bitmap, const RECT& area, UINT flags, COLORREF colour) const;

    /// Proportional font: height 5 x size, average width 2 x size. Delete it after use.
    static HFONT ProportionalFont(int size, bool bold);
    /// Fixed-pitch font of a height in pixels, 16 when 0. Delete it after use.
    static HFONT FixedFont(int height, UINT flags);
    /// Lets the user choose a font in the system's dialog, which starts from the given one (0: from
    /// the system's usual one). Delete it after use. @return 0 when cancelled
    static HFONT ChooseFont(const CWin* owner, HFONT current);
    /// Writes in the proportional font.
    void WriteText(LONG x, LONG y, const CString& text, int size, bool bold) const;
    void WriteText(LONG x, LONG y, const CString& text, int size, bool bold,
                   COLORREF background) const;
    /// Writes at the current position and moves it to the text's end.
    void WriteText(const CString& text) const;

    /// Solid line; the end point is not drawn.
    void DrawLine(LONG x1, LONG y1, LONG x2, LONG y2, int width = 1, COLORREF colour = 0) const;
    /// Ellipse filled and outlined in one colour; right and bottom lie outside.
    void DrawEllipse(const RECT& bounds, COLORREF colour, int pen_width = 1) const;
    /// Part of the bounds' ellipse, counter-clockwise from the ray through `start` to that through
    /// `end`.
    void DrawArc(const RECT& bounds, POINT start, POINT end, COLORREF colour,
                 int pen_width = 1) const;

    /// Anisotropic mapping from 800 x 800 logical units to 10 x scale pixels, origin (x, y), text
    /// aligned to its bottom.
    void SetUpScaledDrawing(int x, int y, int scale) const;

private:
    void DropBitmap();

    HDC context_ = nullptr;
    PAINTSTRUCT paint_{};
    HBITMAP bitmap_ = nullptr;   ///< off-screen; none unless made compatible
    HGDIOBJ replaced_ = nullptr; ///< what the off-screen bitmap replaced
};

/// The background colour of a picture by its four corners: the top-left corner's if another corner
/// agrees; else the first pair's that agrees; else the top-left corner's.
/// @param memory  device context that holds the picture
COLORREF BackgroundByCorners(HDC memory, LONG width, LONG height);

} // namespace kelvo
