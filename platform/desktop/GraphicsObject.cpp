#include "platform/desktop/GraphicsObject.h"

#include "platform/base/Immortal.h"
#include "platform/desktop/ObjectTable.h"
#include "platform/desktop/SystemColours.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <type_traits>

namespace kelvo::desktop {

namespace {

using GraphicsTable = ObjectTable<HGDIOBJ, GraphicsItem>;

// Never destroyed: global objects of the program delete their bitmaps after static ones of this
// file would have gone.
GraphicsTable& Items() {
    static platform::Immortal<GraphicsTable> table;
    return *table;
}

template <class Content>
HGDIOBJ AddStock(Content content) {
    return Items().Add(
        std::make_shared<GraphicsItem>(GraphicsItem{std::move(content), Stock::Yes}));
}

HGDIOBJ AddStockFont(LONG height) {
    LOGFONTA description{};
    description.lfHeight = height;
    description.lfWeight = FW_NORMAL;
    description.lfCharSet = DEFAULT_CHARSET;
    description.lfPitchAndFamily = VARIABLE_PITCH | FF_SWISS;
    return AddStock(std::make_shared<Font>(description));
}

struct StockObject {
    int index;
    HGDIOBJ handle;
};

const std::array<StockObject, 11>& StockObjects() {
    static const std::array<StockObject, 11> objects{{
        {WHITE_BRUSH, AddStock(Brush{RGB(255, 255, 255)})},
        {LTGRAY_BRUSH, AddStock(Brush{RGB(192, 192, 192)})},
        {GRAY_BRUSH, AddStock(Brush{RGB(128, 128, 128)})},
        {DKGRAY_BRUSH, AddStock(Brush{RGB(64, 64, 64)})},
        {BLACK_BRUSH, AddStock(Brush{RGB(0, 0, 0)})},
        {NULL_BRUSH, AddStock(Brush{0, true})},
        {WHITE_PEN, AddStock(Pen{PS_SOLID, 1, RGB(255, 255, 255)})},
        {BLACK_PEN, AddStock(Pen{PS_SOLID, 1, RGB(0, 0, 0)})},
        {NULL_PEN, AddStock(Pen{PS_NULL, 1, 0})},
        {SYSTEM_FONT, AddStockFont(16)},
        {DEFAULT_GUI_FONT, AddStockFont(-11)},
    }};
    return objects;
}

template <class Structure>
int CopyOut(const Structure& structure, int size, LPVOID buffer) {
    if (buffer == nullptr) return sizeof(Structure);
    if (size < static_cast<int>(sizeof(Structure))) return 0;
    std::memcpy(buffer, &structure, sizeof(Structure));
    return sizeof(Structure);
}

BITMAP DescribeBitmap(PixelBuffer& pixels) {
    const std::lock_guard lock(pixels.Mutex());
    const QImage& image = pixels.Image();
    BITMAP description{};
    description.bmWidth = image.width();
    description.bmHeight = image.height();
    description.bmWidthBytes = static_cast<LONG>(image.bytesPerLine());
    description.bmPlanes = 1;
    description.bmBitsPixel = 32;
    return description;
}

} // namespace

std::mutex& SelectionMutex() {
    static platform::Immortal<std::mutex> mutex;
    return *mutex;
}

HGDIOBJ AddGraphicsItem(std::shared_ptr<GraphicsItem> item) {
    return Items().Add(std::move(item));
}

std::shared_ptr<GraphicsItem> FindGraphicsItem(HGDIOBJ handle) {
    return Items().Find(handle);
}

HBITMAP StockBitmap() {
    static const HBITMAP bitmap = AddStock(std::make_shared<PixelBuffer>(QSize(1, 1)));
    return bitmap;
}

bool FindBrush(HBRUSH handle, Brush& brush) {
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    if (number >= 1 && number <= kSystemColourCount) {
        brush = Brush{GetSysColor(static_cast<int>(number - 1))};
        return true;
    }
    const auto item = FindGraphicsItem(handle);
    const Brush* found = item ? std::get_if<Brush>(&item->content) : nullptr;
    if (found != nullptr) brush = *found;
    return found != nullptr;
}

QRgb PixelFrom(COLORREF colour) {
    return qRgb(GetRValue(colour), GetGValue(colour), GetBValue(colour));
}

COLORREF ColourFrom(QRgb pixel) {
    return RGB(static_cast<DWORD>(qRed(pixel)), static_cast<DWORD>(qGreen(pixel)),
               static_cast<DWORD>(qBlue(pixel)));
}

void CountGraphicsItems(DrawingObjectCounts& counts) {
    Items().ForEach([&counts](HGDIOBJ, const GraphicsItem& item) {
        if (item.stock == Stock::Yes) return;
        counts.bitmaps +=
            std::holds_alternative<std::shared_ptr<PixelBuffer>>(item.content) ? 1 : 0;
        counts.brushes += std::holds_alternative<Brush>(item.content) ? 1 : 0;
        counts.pens += std::holds_alternative<Pen>(item.content) ? 1 : 0;
        counts.fonts += std::holds_alternative<std::shared_ptr<Font>>(item.content) ? 1 : 0;
    });
}

namespace {

template <class Content>
HGDIOBJ AddOwn(Content content) {
    return AddGraphicsItem(
        std::make_shared<GraphicsItem>(GraphicsItem{std::move(content), Stock::No}));
}

} // namespace

} // namespace kelvo::desktop

using namespace kelvo::desktop;

HGDIOBJ GetStockObject(int index) {
    const auto& objects = StockObjects();
    const auto found = std::ranges::find(objects, index, &StockObject::index);
    return found == objects.end() ? nullptr : found->handle;
}

BOOL DeleteObject(HGDIOBJ object) {
    const std::lock_guard lock(SelectionMutex());
    const auto item = Items().Find(object);
    if (!item) return FALSE;
    if (item->stock == Stock::Yes) return TRUE;
    if (item->selections > 0) return FALSE;
    Items().Remove(object);
    return TRUE;
}

int GetObjectA(HGDIOBJ object, int size, LPVOID buffer) {
    const auto item = FindGraphicsItem(object);
    if (!item) return 0;
    if (const auto* pixels = std::get_if<std::shared_ptr<PixelBuffer>>(&item->content)) {
        return CopyOut(DescribeBitmap(**pixels), size, buffer);
    }
    if (const auto* font = std::get_if<std::shared_ptr<Font>>(&item->content)) {
        return CopyOut((*font)->Description(), size, buffer);
    }
    return 0;
}

HBRUSH CreateSolidBrush(COLORREF colour) {
    return AddOwn(Brush{colour});
}

HPEN CreatePen(int style, int width, COLORREF colour) {
    return AddOwn(Pen{style, std::max(width, 1), colour});
}

HFONT CreateFontIndirectA(const LOGFONTA* font) {
    if (font == nullptr) return nullptr;
    return AddOwn(std::make_shared<Font>(*font));
}
