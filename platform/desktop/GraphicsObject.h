#pragma once
// What can be selected into a device context: bitmaps, brushes, pens, fonts, behind their handles.
// The calls that make and delete them are declared in drawing.h.

#include "platform/desktop/Fonts.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/drawing.h"

#include <memory>
#include <mutex>
#include <variant>

namespace kelvo::desktop {

struct Brush {
    COLORREF colour = 0;
    bool hollow = false;
};
struct Pen {
    int style = PS_SOLID;
    int width = 1;
    COLORREF colour = 0;
};

enum class Stock : bool { No, Yes };

struct GraphicsItem {
    std::variant<std::shared_ptr<PixelBuffer>, Brush, Pen, std::shared_ptr<Font>> content;
    const Stock stock;
    int selections = 0; ///< device contexts that it is selected into; under SelectionMutex()
};

/// Held while something is selected or deleted, before the lock of a device context.
std::mutex& SelectionMutex();

HGDIOBJ AddGraphicsItem(std::shared_ptr<GraphicsItem> item);
/// @return null for a handle of nothing.
std::shared_ptr<GraphicsItem> FindGraphicsItem(HGDIOBJ handle);

/// The bitmap that every device context in memory begins with.
HBITMAP StockBitmap();

/// The brush behind a handle, or behind COLOR_... + 1 in its place.
/// @return false when it is neither.
bool FindBrush(HBRUSH handle, Brush& brush);

/// 0xffRRGGBB of a colour value.
QRgb PixelFrom(COLORREF colour);
COLORREF ColourFrom(QRgb pixel);

/// Adds to the counts what is alive, stock objects left out.
void CountGraphicsItems(DrawingObjectCounts& counts);

} // namespace kelvo::desktop
