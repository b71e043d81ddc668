// Bitmaps and their way into a device context: BitBlt, StretchBlt, StretchDIBits, single pixels.

#include "platform/base/resources.h"
#include "platform/desktop/DeviceContext.h"
#include "platform/desktop/Dib.h"
#include "platform/desktop/Stretch.h"

#include <algorithm>
#include <cstdlib>

using namespace kelvo::desktop;

namespace {

// Beyond these, no coordinate of a device has a meaning, and products could overflow.
constexpr int kGreatestExtent = 1 << 27;

bool IsExtent(int extent) {
    return extent != 0 && extent >= -kGreatestExtent && extent <= kGreatestExtent;
}

bool IsCoordinate(int coordinate) {
    return coordinate >= -kGreatestExtent && coordinate <= kGreatestExtent;
}

/// A rectangle as a caller gives it: extents below 0 mirror.
struct Area {
    int x;
    int y;
    int width;
    int height;

    bool IsUsable() const {
        return IsCoordinate(x) && IsCoordinate(y) && IsExtent(width) && IsExtent(height);
    }
    int Left() const { return std::min(x, x + width); }
    int Top() const { return std::min(y, y + height); }
};

// The source is given in pixels, counted from the picture's top.
Placement PlacementFor(const Mapping& mapping, const Area& target, const Area& source) {
    const int left = mapping.X(target.x);
    const int top = mapping.Y(target.y);
    const int right = mapping.X(target.x + target.width);
    const int bottom = mapping.Y(target.y + target.height);
    Placement placement;
    placement.target = QRect(std::min(left, right), std::min(top, bottom), std::abs(right - left),
                             std::abs(bottom - top));
    placement.source_x = source.Left();
    placement.source_y = source.Top();
    placement.source_width = std::abs(source.width);
    placement.source_height = std::abs(source.height);
    placement.mirror_x = (right < left) != (source.width < 0);
    placement.mirror_y = (bottom < top) != (source.height < 0);
    return placement;
}

Sampling SamplingOf(const DrawState& state) {
    return state.stretch_mode == HALFTONE ? Sampling::Smooth : Sampling::Nearest;
}

DibView ViewImage(const QImage& image) {
    DibView view;
    view.width = image.width();
    view.height = image.height();
    view.top_down = true;
    view.bit_count = 32;
    view.stride = static_cast<std::size_t>(image.bytesPerLine());
    view.bits = image.constBits();
    return view;
}

HBITMAP AddBitmap(std::shared_ptr<PixelBuffer> pixels) {
    return AddGraphicsItem(
        std::make_shared<GraphicsItem>(GraphicsItem{std::move(pixels), Stock::No}));
}

// Copies within one buffer: the source is set aside, because the areas may overlap.
bool StretchWithin(const DrawState& state, const Placement& placement) {
    return DrawOn(state, [&](QImage& image, const QRect& clip) {
        const QImage source = image.copy();
        return StretchInto(image, clip, placement, ViewImage(source), SamplingOf(state));
    });
}

bool StretchBetween(const DrawState& target, PixelBuffer& source, const Placement& placement) {
    QRect changed;
    {
        const std::scoped_lock lock(target.target->Mutex(), source.Mutex());
        if (target.target->Gone() || source.Gone()) return false;
        QImage& image = target.target->Image();
        const QRect clip = target.clip ? (image.rect() & *target.clip) : image.rect();
        if (source.Image().isNull() || clip.isEmpty()) return true;
        changed =
            StretchInto(image, clip, placement, ViewImage(source.Image()), SamplingOf(target));
    }
    target.target->Changed(changed);
    return true;
}

std::optional<QPoint> VisiblePoint(const DrawState& state, const QRect& clip, int x, int y) {
    const QPoint point(state.mapping.X(x), state.mapping.Y(y));
    return clip.contains(point) ? std::optional(point) : std::nullopt;
}

} // namespace

HBITMAP LoadBitmapA(HINSTANCE module, LPCSTR name) {
    const HRSRC resource = FindResourceA(module, name, RT_BITMAP);
    if (resource == nullptr) return nullptr;
    const auto* bytes =
        static_cast<const std::uint8_t*>(LockResource(LoadResource(module, resource)));
    if (bytes == nullptr) return nullptr;
    const auto picture = ViewPackedDib({bytes, SizeofResource(module, resource)});
    if (!picture) return nullptr;
    auto pixels = std::make_shared<PixelBuffer>(QSize(picture->width, picture->height));
    QImage& image = pixels->Image(); // nobody else has it yet
    if (image.isNull()) return nullptr;
    for (int y = 0; y < picture->height; ++y) {
        ExpandPixels(*picture, picture->Row(y), 0, picture->width,
                     reinterpret_cast<std::uint32_t*>(image.scanLine(y)));
    }
    return AddBitmap(std::move(pixels));
}

HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height) {
    if (!FindContext(dc) || width < 0 || height < 0) return nullptr;
    const QSize size = width == 0 || height == 0 ? QSize(1, 1) : QSize(width, height);
    auto pixels = std::make_shared<PixelBuffer>(size);
    return pixels->Image().isNull() ? nullptr : AddBitmap(std::move(pixels));
}

BOOL BitBlt(HDC target, int x, int y, int width, int height, HDC source, int source_x, int source_y,
            DWORD operation) {
    if (width == 0 || height == 0) {
        return FindContext(target) && FindContext(source) && operation == SRCCOPY ? TRUE : FALSE;
    }
    return StretchBlt(target, x, y, width, height, source, source_x, source_y, width, height,
                      operation);
}

BOOL StretchBlt(HDC target, int x, int y, int width, int height, HDC source, int source_x,
                int source_y, int source_width, int source_height, DWORD operation) {
    const auto to = StateOf(target);
    const auto from = StateOf(source);
    const Area target_area{x, y, width, height};
    const Area source_area{source_x, source_y, source_width, source_height};
    if (!to || !from || !to->target || !from->target || operation != SRCCOPY) return FALSE;
    if (!target_area.IsUsable() || !source_area.IsUsable()) return FALSE;
    const Mapping& map = from->mapping;
    const int left = map.X(source_x);
    const int top = map.Y(source_y);
    const Area source_pixels{left, top, map.X(source_x + source_width) - left,
                             map.Y(source_y + source_height) - top};
    const Placement placement = PlacementFor(to->mapping, target_area, source_pixels);
    if (to->target == from->target) return StretchWithin(*to, placement) ? TRUE : FALSE;
    return StretchBetween(*to, *from->target, placement) ? TRUE : FALSE;
}

int StretchDIBits(HDC dc, int x, int y, int width, int height, int source_x, int source_y,
                  int source_width, int source_height, const void* bits, const BITMAPINFO* info,
                  UINT usage, DWORD operation) {
    const auto state = StateOf(dc);
    if (!state || usage != DIB_RGB_COLORS || operation != SRCCOPY) return 0;
    const auto picture = ViewDib(info, bits);
    const Area target{x, y, width, height};
    Area source{source_x, source_y, source_width, source_height};
    if (!picture || !target.IsUsable() || !source.IsUsable()) return 0;
    // A bottom-up picture has its origin at the bottom; placements count from the top.
    const int lower = source.Top();
    const int upper = lower + std::abs(source_height);
    const int rows = std::min(upper, picture->height) - std::max(lower, 0);
    if (rows <= 0) return 0;
    if (!picture->top_down) {
        const bool is_mirrored = source_height < 0;
        source.y = picture->height - (is_mirrored ? lower : upper);
    }
    const Placement placement = PlacementFor(state->mapping, target, source);
    const bool is_drawn = DrawOn(*state, [&](QImage& image, const QRect& clip) {
        return StretchInto(image, clip, placement, *picture, SamplingOf(*state));
    });
    return is_drawn ? rows : 0;
}

COLORREF GetPixel(HDC dc, int x, int y) {
    const auto state = StateOf(dc);
    COLORREF colour = CLR_INVALID;
    if (!state) return colour;
    DrawOn(*state, [&](const QImage& image, const QRect& clip) {
        if (const auto point = VisiblePoint(*state, clip, x, y)) {
            colour = ColourFrom(image.pixel(*point));
        }
        return QRect();
    });
    return colour;
}

COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour) {
    const auto state = StateOf(dc);
    COLORREF result = CLR_INVALID;
    if (!state) return result;
    DrawOn(*state, [&](QImage& image, const QRect& clip) {
        const auto point = VisiblePoint(*state, clip, x, y);
        if (!point) return QRect();
        image.setPixel(*point, PixelFrom(colour));
        result = colour & 0xFFFFFFU;
        return QRect(*point, QSize(1, 1));
    });
    return result;
}
