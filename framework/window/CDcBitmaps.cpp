// Pictures: drawn as they are, with their background replaced, or fitted into a rectangle.

#include "framework/window/CDc.h"

namespace kelvo {
namespace {

/// A bitmap selected into a device context of its own, as long as this object lives.
class SelectedBitmap {
public:
    SelectedBitmap(HDC like, HBITMAP bitmap) {
        if (GetObjectA(bitmap, sizeof size_, &size_) == 0) return;
        memory_ = CreateCompatibleDC(like);
        former_ = SelectObject(memory_, bitmap);
    }
    SelectedBitmap(const SelectedBitmap&) = delete;
    SelectedBitmap& operator=(const SelectedBitmap&) = delete;
    ~SelectedBitmap() {
        if (memory_ == nullptr) return;
        SelectObject(memory_, former_);
        DeleteDC(memory_);
    }

    HDC Context() const { return memory_; }
    LONG Width() const { return size_.bmWidth; }
    LONG Height() const { return size_.bmHeight; }

    void ReplaceBackground(COLORREF replacement) const {
        const COLORREF background = BackgroundByCorners(memory_, Width(), Height());
        for (LONG y = 0; y < Height(); ++y) {
            for (LONG x = 0; x < Width(); ++x) {
                if (GetPixel(memory_, x, y) == background) SetPixel(memory_, x, y, replacement);
            }
        }
    }

private:
    HDC memory_ = nullptr;
    HGDIOBJ former_ = nullptr;
    BITMAP size_{};
};

struct Placement {
    LONG x;
    LONG y;
    LONG width;
    LONG height;
};

Placement PlaceUnscaled(const RECT& area, LONG width, LONG height, UINT flags) {
    const LONG room_x = area.right - area.left - width;
    const LONG room_y = area.bottom - area.top - height;
    LONG x = area.left + room_x;
    if ((flags & kDrawLeft) != 0) {
        x = area.left;
    } else if ((flags & kDrawCentre) != 0) {
        x = area.left + room_x / 2;
    }
    LONG y = area.top + room_y;
    if ((flags & kDrawTop) != 0) {
        y = area.top;
    } else if ((flags & kDrawMiddle) != 0) {
        y = area.top + room_y / 2;
    }
    return {x, y, area.right - area.left, area.bottom - area.top};
}

/// Fits the picture, keeping its shape; ratios in single precision, results cut to whole pixels.
Placement PlaceFitted(const RECT& area, LONG width, LONG height, UINT flags) {
    const auto room_width = static_cast<float>(area.right - area.left);
    const auto room_height = static_cast<float>(area.bottom - area.top);
    const auto own_width = static_cast<float>(width);
    const auto own_height = static_cast<float>(height);
    const bool limited_by_width = own_width / own_height > room_width / room_height;
    const float scale = limited_by_width ? room_width / own_width : room_height / own_height;
    const float shown_width = scale * own_width;
    const float shown_height = scale * own_height;
    auto x = static_cast<float>(area.left);
    auto y = static_cast<float>(area.top);
    if (limited_by_width) {
        const float slack = room_height - shown_height;
        if ((flags & kDrawTop) == 0) y += (flags & kDrawMiddle) != 0 ? slack * 0.5F : slack;
    } else {
        const float slack = room_width - shown_width;
        if ((flags & kDrawLeft) == 0) x += (flags & kDrawCentre) != 0 ? slack * 0.5F : slack;
    }
    return {static_cast<LONG>(x), static_cast<LONG>(y), static_cast<LONG>(shown_width),
            static_cast<LONG>(shown_height)};
}

} // namespace

COLORREF BackgroundByCorners(HDC memory, LONG width, LONG height) {
    const COLORREF top_left = GetPixel(memory, 0, 0);
    const COLORREF bottom_left = GetPixel(memory, 0, height - 1);
    const COLORREF bottom_right = GetPixel(memory, width - 1, height - 1);
    const COLORREF top_right = GetPixel(memory, width - 1, 0);
    if (top_left == bottom_left || top_left == bottom_right || top_left == top_right) {
        return top_left;
    }
    if (bottom_left == bottom_right || bottom_left == top_right) return bottom_left;
    if (bottom_right == top_right) return bottom_right;
    return top_left;
}

void CDc::DrawBitmap(HBITMAP bitmap, LONG x, LONG y) const {
    const SelectedBitmap picture(context_, bitmap);
    if (picture.Context() == nullptr) return;
    BitBlt(context_, x, y, picture.Width(), picture.Height(), picture.Context(), 0, 0, SRCCOPY);
}

void CDc::DrawBitmap(HBITMAP bitmap, LONG x, LONG y, COLORREF replacement) const {
    const SelectedBitmap picture(context_, bitmap);
    if (picture.Context() == nullptr) return;
    picture.ReplaceBackground(replacement);
    BitBlt(context_, x, y, picture.Width(), picture.Height(), picture.Context(), 0, 0, SRCCOPY);
}

void CDc::DrawBitmap(HBITMAP bitmap, const RECT& area, UINT flags, COLORREF colour) const {
    const SelectedBitmap picture(context_, bitmap);
    if (picture.Context() == nullptr) return;
    if ((flags & kDrawReplaceBackground) != 0) picture.ReplaceBackground(colour);
    const LONG width = picture.Width();
    const LONG height = picture.Height();
    if ((flags & kDrawStretch) != 0) {
        StretchBlt(context_, area.left, area.top, area.right - area.left, area.bottom - area.top,
                   picture.Context(), 0, 0, width, height, SRCCOPY);
        return;
    }
    if ((flags & kDrawNoScale) != 0) {
        const Placement place = PlaceUnscaled(area, width, height, flags);
        BitBlt(context_, place.x, place.y, place.width, place.height, picture.Context(), 0, 0,
               SRCCOPY);
        return;
    }
    const Placement place = PlaceFitted(area, width, height, flags);
    StretchBlt(context_, place.x, place.y, place.width, place.height, picture.Context(), 0, 0,
               width, height, SRCCOPY);
}

} // namespace kelvo
