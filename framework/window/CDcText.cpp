// Text in the framework's two standard fonts, lines and shapes.

#include "framework/base/CString.h"
#include "framework/window/CDc.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace kelvo {
namespace {

constexpr char kProportionalFace[] = "Arial";
constexpr char kFixedFace[] = "CourierNew";
constexpr int kDefaultFixedHeight = 16;
constexpr int kLogicalExtent = 800;
constexpr int kPixelsPerScale = 10;

void SetFace(LOGFONTA& font, const char* face) {
    std::copy_n(face, std::min<std::size_t>(std::strlen(face), LF_FACESIZE - 1), font.lfFaceName);
}

/// An object selected into a device context as long as this lives, then deleted.
class TemporarySelection {
public:
    TemporarySelection(HDC context, HGDIOBJ object)
        : context_(context), object_(object), former_(SelectObject(context, object)) {}
    TemporarySelection(const TemporarySelection&) = delete;
    TemporarySelection& operator=(const TemporarySelection&) = delete;
    ~TemporarySelection() {
        SelectObject(context_, former_);
        DeleteObject(object_);
    }

private:
    HDC context_;
    HGDIOBJ object_;
    HGDIOBJ former_;
};

} // namespace

HFONT CDc::ProportionalFont(int size, bool bold) {
    LOGFONTA font{};
    font.lfHeight = 5 * size;
    font.lfWidth = 2 * size;
    font.lfWeight = bold ? FW_BOLD : FW_NORMAL;
    font.lfCharSet = DEFAULT_CHARSET;
    font.lfOutPrecision = OUT_DEFAULT_PRECIS;
    font.lfClipPrecision = CLIP_DEFAULT_PRECIS;
    font.lfQuality = PROOF_QUALITY;
    font.lfPitchAndFamily = VARIABLE_PITCH | FF_MODERN;
    SetFace(font, kProportionalFace);
    return CreateFontIndirectA(&font);
}

HFONT CDc::FixedFont(int height, UINT flags) {
    LOGFONTA font{};
    font.lfHeight = height == 0 ? kDefaultFixedHeight : height;
    font.lfWeight = FW_NORMAL;
    font.lfUnderline = (flags & kFontUnderline) != 0 ? 1 : 0;
    font.lfItalic = (flags & kFontItalic) != 0 ? 1 : 0;
    font.lfStrikeOut = (flags & kFontStrikeOut) != 0 ? 1 : 0;
    font.lfCharSet = ANSI_CHARSET;
    font.lfQuality = PROOF_QUALITY;
    font.lfPitchAndFamily = FIXED_PITCH;
    SetFace(font, kFixedFace);
    return CreateFontIndirectA(&font);
}

void CDc::WriteText(LONG x, LONG y, const CString& text, int size, bool bold) const {
    const TemporarySelection font(context_, ProportionalFont(size, bold));
    TextOutA(context_, x, y, text.Text(), text.Length());
}

void CDc::WriteText(LONG x, LONG y, const CString& text, int size, bool bold,
                    COLORREF background) const {
    SetBkColor(context_, background);
    WriteText(x, y, text, size, bold);
}

void CDc::WriteText(const CString& text) const {
    POINT position{};
    GetCurrentPositionEx(context_, &position);
    TextOutA(context_, position.x, position.y, text.Text(), text.Length());
    SIZE extent{};
    GetTextExtentExPointA(context_, text.Text(), text.Length(), INT_MAX, nullptr, nullptr, &extent);
    MoveToEx(context_, position.x + extent.cx, position.y, nullptr);
}

void CDc::DrawLine(LONG x1, LONG y1, LONG x2, LONG y2, int width, COLORREF colour) const {
    const TemporarySelection pen(context_, CreatePen(PS_SOLID, width, colour));
    MoveToEx(context_, x1, y1, nullptr);
    LineTo(context_, x2, y2);
}

void CDc::DrawEllipse(const RECT& bounds, COLORREF colour, int pen_width) const {
    const TemporarySelection pen(context_, CreatePen(PS_SOLID, pen_width, colour));
    const TemporarySelection brush(context_, CreateSolidBrush(colour));
    Ellipse(context_, bounds.left, bounds.top, bounds.right, bounds.bottom);
}

void CDc::DrawArc(const RECT& bounds, POINT start, POINT end, COLORREF colour,
                  int pen_width) const {
    const TemporarySelection pen(context_, CreatePen(PS_SOLID, pen_width, colour));
    Arc(context_, bounds.left, bounds.top, bounds.right, bounds.bottom, start.x, start.y, end.x,
        end.y);
}

void CDc::SetUpScaledDrawing(int x, int y, int scale) const {
    SetMapMode(context_, MM_ANISOTROPIC);
    SetWindowOrgEx(context_, x, y, nullptr);
    SetViewportOrgEx(context_, 0, 0, nullptr);
    SetWindowExtEx(context_, kLogicalExtent, kLogicalExtent, nullptr);
    SetViewportExtEx(context_, kPixelsPerScale * scale, kPixelsPerScale * scale, nullptr);
    SetTextAlign(context_, TA_BOTTOM);
}

} // namespace kelvo
