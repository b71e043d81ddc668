#pragma once
// Device contexts: what they draw on, what is selected into them, and how logical coordinates
// become pixels. The drawing calls take a copy of the state, so that no device context stays locked
// while pixels are written.

#include "platform/desktop/GraphicsObject.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/drawing.h"

#include <memory>
#include <mutex>
#include <optional>

namespace kelvo::desktop {

/// Logical coordinates to pixels. In MM_TEXT the extents do not count.
struct Mapping {
    int mode = MM_TEXT;
    POINT window_origin{0, 0};
    POINT viewport_origin{0, 0};
    SIZE window_extent{1, 1};
    SIZE viewport_extent{1, 1};

    double ScaleX() const;
    double ScaleY() const;
    /// Clamped to what a picture can have, so that sums of two never overflow.
    int X(int x) const;
    int Y(int y) const;
};

/// A copy of all that a drawing call needs.
struct DrawState {
    std::shared_ptr<PixelBuffer> target; ///< null: the screen, which cannot be drawn on
    std::optional<QRect> clip;
    Mapping mapping;
    int stretch_mode = BLACKONWHITE;
    COLORREF text_colour = RGB(0, 0, 0);
    COLORREF background_colour = RGB(255, 255, 255);
    int background_mode = OPAQUE;
    UINT text_alignment = TA_LEFT | TA_TOP;
    POINT position{0, 0};
    Brush brush;
    Pen pen;
    std::shared_ptr<Font> font;
};

class DeviceContext {
public:
    enum class Kind { Window, OwnedByWindow, Painting, Screen, Memory };

    DeviceContext(Kind context_kind, HWND context_window)
        : kind(context_kind), window(context_window) {}

    const Kind kind;
    const HWND window; ///< null for the screen and memory

    std::mutex mutex;
    DrawState state;          ///< under mutex
    HBITMAP bitmap = nullptr; ///< under mutex, as all that is selected
    HBRUSH brush = nullptr;
    HPEN pen = nullptr;
    HFONT font = nullptr;
};

/// @return null for a handle of nothing.
std::shared_ptr<DeviceContext> FindContext(HDC dc);
/// @return nothing for a handle of nothing.
std::optional<DrawState> StateOf(HDC dc);

/// A device context that draws on the buffer, as one in memory that keeps its bitmap; for DeleteDC.
HDC AddBufferContext(std::shared_ptr<PixelBuffer> target);

/// A further one for painting, which draws nothing outside of the clip.
/// @return null for a window without a surface.
HDC AddPaintingContext(HWND window, const QRect& clip);
/// @return false for any other handle.
bool FreePaintingContext(HDC dc);

/// Frees all device contexts of a window that goes.
void FreeContextsOf(HWND window);

/// Locks the target and calls draw(image, clip), which answers the rectangle that it changed; not
/// called when nothing can be seen.
/// @return false when there is nothing to draw on.
template <class Draw>
bool DrawOn(const DrawState& state, Draw draw) {
    if (!state.target) return false;
    QRect changed;
    {
        const std::lock_guard lock(state.target->Mutex());
        if (state.target->Gone()) return false;
        QImage& image = state.target->Image();
        const QRect clip = state.clip ? (image.rect() & *state.clip) : image.rect();
        if (!clip.isEmpty()) changed = draw(image, clip) & clip;
    }
    if (!changed.isEmpty()) state.target->Changed(changed);
    return true;
}

/// The rectangle between two corners in pixels; mirrored extents are put in order.
QRect MappedRect(const Mapping& mapping, int left, int top, int right, int bottom);

} // namespace kelvo::desktop
