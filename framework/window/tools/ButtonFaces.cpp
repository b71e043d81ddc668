#include "framework/window/tools/ButtonFaces.h"

#include "framework/window/CDc.h"

namespace kelvo::button_faces {
namespace {

constexpr COLORREF kLight = 0xD7D7D7;
constexpr COLORREF kShade = 0x5A5A5A;
constexpr COLORREF kOuterLight = 0xFFFFFF;
constexpr COLORREF kOuterDark = 0x000000;
constexpr COLORREF kSunkenCorner = 0xC0C0C0;
constexpr COLORREF kSunkenDark = 0x505050;
constexpr COLORREF kDisabled = 0xC8C8C8;
constexpr double kSunkenShade = 0.8;
constexpr LONG kGrowth = 4; ///< of both sides

/// A context in memory with a bitmap in it, as long as this object lives.
class BitmapContext {
public:
    BitmapContext(HDC like, HBITMAP bitmap)
        : context_(CreateCompatibleDC(like)), former_(SelectObject(context_, bitmap)) {}
    BitmapContext(const BitmapContext&) = delete;
    BitmapContext& operator=(const BitmapContext&) = delete;
    ~BitmapContext() {
        SelectObject(context_, former_);
        DeleteDC(context_);
    }
    HDC Context() const { return context_; }

private:
    HDC context_;
    HGDIOBJ former_;
};

/// A new bitmap, larger by `growth`, with the picture copied to (at, at).
HBITMAP CopyOf(HDC context, HBITMAP bitmap, LONG growth, LONG at) {
    const SIZE size = SizeOf(bitmap);
    if (size.cx == 0 || size.cy == 0) return nullptr;
    const HBITMAP copy = CreateCompatibleBitmap(context, size.cx + growth, size.cy + growth);
    const BitmapContext source(context, bitmap);
    const BitmapContext target(context, copy);
    BitBlt(target.Context(), at, at, size.cx, size.cy, source.Context(), 0, 0, SRCCOPY);
    return copy;
}

COLORREF ShadeOf(COLORREF colour) {
    const auto shade = [](BYTE part) { return static_cast<BYTE>(kSunkenShade * part); };
    return RGB(shade(GetRValue(colour)), shade(GetGValue(colour)), shade(GetBValue(colour)));
}

} // namespace

SIZE SizeOf(HBITMAP bitmap) {
    BITMAP values{};
    if (GetObjectA(bitmap, sizeof values, &values) == 0) return {};
    return {values.bmWidth, values.bmHeight};
}

void Draw(HDC context, HBITMAP image, SIZE size) {
    const BitmapContext source(context, image);
    BitBlt(context, 0, 0, size.cx, size.cy, source.Context(), 0, 0, SRCCOPY);
}

HBITMAP Raised(HDC context, HBITMAP bitmap) {
    const HBITMAP face = CopyOf(context, bitmap, kGrowth, 2);
    if (face == nullptr) return nullptr;
    const BitmapContext memory(context, face);
    const CDc dc(memory.Context());
    const auto [w, h] = SizeOf(bitmap);
    dc.DrawLine(1, 1, w + 2, 1, 1, kLight);
    dc.DrawLine(1, 1, 1, h + 2, 1, kLight);
    dc.DrawLine(w + 2, 1, w + 2, h + 2, 1, kShade);
    dc.DrawLine(1, h + 2, w + 3, h + 2, 1, kShade);
    dc.DrawLine(0, 0, w + 3, 0, 1, kOuterLight);
    dc.DrawLine(0, 0, 0, h + 3, 1, kOuterLight);
    dc.DrawLine(w + 3, 0, w + 3, h + 3, 1, kOuterDark);
    dc.DrawLine(0, h + 3, w + 4, h + 3, 1, kOuterDark);
    return face;
}

HBITMAP Sunken(HDC context, HBITMAP bitmap, COLORREF background) {
    const HBITMAP face = CopyOf(context, bitmap, kGrowth, 3);
    if (face == nullptr) return nullptr;
    const BitmapContext memory(context, face);
    const CDc dc(memory.Context());
    const auto [w, h] = SizeOf(bitmap);
    SetPixel(memory.Context(), w + 3, 0, kSunkenCorner);
    SetPixel(memory.Context(), 0, h + 3, kSunkenCorner);
    dc.DrawLine(0, 0, w + 3, 0, 1, kSunkenDark);
    dc.DrawLine(0, 0, 0, h + 3, 1, kSunkenDark);
    dc.DrawLine(w + 3, 1, w + 3, h + 4, 1, kOuterLight);
    dc.DrawLine(1, h + 3, w + 3, h + 3, 1, kOuterLight);
    const COLORREF shade = ShadeOf(background);
    dc.DrawLine(1, 1, w + 3, 1, 1, shade);
    dc.DrawLine(1, 2, w + 3, 2, 1, shade);
    dc.DrawLine(1, 1, 1, h + 3, 1, shade);
    dc.DrawLine(2, 1, 2, h + 3, 1, shade);
    return face;
}

HBITMAP Greyed(HDC context, HBITMAP image) {
    const HBITMAP copy = CopyOf(context, image, 0, 0);
    if (copy == nullptr) return nullptr;
    const BitmapContext memory(context, copy);
    const COLORREF face = GetPixel(memory.Context(), 1, 1);
    const SIZE size = SizeOf(image);
    for (LONG y = 0; y < size.cy; ++y) {
        for (LONG x = 0; x < size.cx; ++x) {
            if (GetPixel(memory.Context(), x, y) != face) {
                SetPixel(memory.Context(), x, y, kDisabled);
            }
        }
    }
    return copy;
}

} // namespace kelvo::button_faces
