#include "platform/desktop/DeviceContext.h"

#include "platform/base/Immortal.h"
#include "platform/desktop/ObjectTable.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace kelvo::desktop {

namespace {

// Device coordinates have 27 bits; what lies outside cannot be seen.
constexpr double kCoordinateLimit = 1 << 27;

using ContextTable = ObjectTable<HDC, DeviceContext>;

// Never destroyed, like the objects that are selected into them.
ContextTable& Contexts() {
    static platform::Immortal<ContextTable> table;
    return *table;
}

// Held while a window's device context is made or all of a window's are freed, so that none is made
// for a window that is going.
std::mutex& WindowContextsMutex() {
    static platform::Immortal<std::mutex> mutex;
    return *mutex;
}

int Clamped(double coordinate) {
    return static_cast<int>(
        std::floor(std::clamp(coordinate, -kCoordinateLimit, kCoordinateLimit) + 0.5));
}

void CountSelection(HGDIOBJ object, int change) {
    if (const auto item = FindGraphicsItem(object)) item->selections += change;
}

HDC AddContext(DeviceContext::Kind kind, HWND window, std::shared_ptr<PixelBuffer> target) {
    auto context = std::make_shared<DeviceContext>(kind, window);
    context->state.target = std::move(target);
    context->brush = GetStockObject(WHITE_BRUSH);
    context->pen = GetStockObject(BLACK_PEN);
    context->font = GetStockObject(SYSTEM_FONT);
    if (kind == DeviceContext::Kind::Memory) context->bitmap = StockBitmap();
    context->state.brush = std::get<Brush>(FindGraphicsItem(context->brush)->content);
    context->state.pen = std::get<Pen>(FindGraphicsItem(context->pen)->content);
    context->state.font = std::get<std::shared_ptr<Font>>(FindGraphicsItem(context->font)->content);
    {
        const std::lock_guard selection(SelectionMutex());
        for (const HGDIOBJ object :
             {context->brush, context->pen, context->font, context->bitmap}) {
            CountSelection(object, 1);
        }
    }
    return Contexts().Add(std::move(context));
}

bool FreeContext(HDC dc) {
    const auto context = Contexts().Remove(dc);
    if (!context) return false;
    const std::lock_guard selection(SelectionMutex());
    const std::lock_guard lock(context->mutex);
    for (const HGDIOBJ object : {context->brush, context->pen, context->font, context->bitmap}) {
        CountSelection(object, -1);
    }
    // Who still draws with a copy of the state ends there; nobody begins anew.
    context->state.target = nullptr;
    return true;
}

HDC FindOwnContext(HWND window) {
    HDC found = nullptr;
    Contexts().ForEach([&](HDC dc, const DeviceContext& context) {
        const bool is_own = context.kind == DeviceContext::Kind::OwnedByWindow;
        if (is_own && context.window == window) found = dc;
    });
    return found;
}

// The bitmap that every context in memory begins with is shared; its one pixel is not.
std::shared_ptr<PixelBuffer> TargetFor(HGDIOBJ bitmap, const std::shared_ptr<PixelBuffer>& pixels) {
    return bitmap == StockBitmap() ? std::make_shared<PixelBuffer>(QSize(1, 1)) : pixels;
}

} // namespace

double Mapping::ScaleX() const {
    if (mode == MM_TEXT) return 1.0;
    return static_cast<double>(viewport_extent.cx) / window_extent.cx;
}

double Mapping::ScaleY() const {
    if (mode == MM_TEXT) return 1.0;
    return static_cast<double>(viewport_extent.cy) / window_extent.cy;
}

int Mapping::X(int x) const {
    return Clamped((static_cast<double>(x) - window_origin.x) * ScaleX() + viewport_origin.x);
}

int Mapping::Y(int y) const {
    return Clamped((static_cast<double>(y) - window_origin.y) * ScaleY() + viewport_origin.y);
}

QRect MappedRect(const Mapping& mapping, int left, int top, int right, int bottom) {
    const auto [x1, x2] = std::minmax({mapping.X(left), mapping.X(right)});
    const auto [y1, y2] = std::minmax({mapping.Y(top), mapping.Y(bottom)});
    return {x1, y1, x2 - x1, y2 - y1};
}

std::shared_ptr<DeviceContext> FindContext(HDC dc) {
    return Contexts().Find(dc);
}

std::optional<DrawState> StateOf(HDC dc) {
    const auto context = FindContext(dc);
    if (!context) return std::nullopt;
    const std::lock_guard lock(context->mutex);
    return context->state;
}

HDC AddBufferContext(std::shared_ptr<PixelBuffer> target) {
    return AddContext(DeviceContext::Kind::Memory, nullptr, std::move(target));
}

void FreeContextsOf(HWND window) {
    if (window == nullptr) return;
    const std::lock_guard lock(WindowContextsMutex());
    std::vector<HDC> contexts;
    Contexts().ForEach([&](HDC dc, const DeviceContext& context) {
        if (context.window == window) contexts.push_back(dc);
    });
    std::ranges::for_each(contexts, FreeContext);
}

DrawingObjectCounts CountDrawingObjects() {
    DrawingObjectCounts counts;
    Contexts().ForEach([&counts](HDC, const DeviceContext&) { ++counts.device_contexts; });
    CountGraphicsItems(counts);
    return counts;
}

HDC AddPaintingContext(HWND window, const QRect& clip) {
    const std::lock_guard lock(WindowContextsMutex());
    auto surface = SurfaceOf(window);
    if (!surface) return nullptr;
    const HDC dc = AddContext(DeviceContext::Kind::Painting, window, std::move(surface));
    Contexts().Find(dc)->state.clip = clip;
    return dc;
}

bool FreePaintingContext(HDC dc) {
    const auto context = Contexts().Find(dc);
    return context && context->kind == DeviceContext::Kind::Painting && FreeContext(dc);
}

namespace {

HGDIOBJ SelectBitmap(DeviceContext& context, HGDIOBJ object, GraphicsItem& item) {
    const bool is_taken = item.stock == Stock::No && item.selections > 0;
    if (context.kind != DeviceContext::Kind::Memory) return nullptr;
    if (is_taken && context.bitmap != object) return nullptr;
    context.state.target = TargetFor(object, std::get<std::shared_ptr<PixelBuffer>>(item.content));
    return std::exchange(context.bitmap, object);
}

HGDIOBJ Select(DeviceContext& context, HGDIOBJ object, GraphicsItem& item) {
    if (const auto* brush = std::get_if<Brush>(&item.content)) {
        context.state.brush = *brush;
        return std::exchange(context.brush, object);
    }
    if (const auto* pen = std::get_if<Pen>(&item.content)) {
        context.state.pen = *pen;
        return std::exchange(context.pen, object);
    }
    if (const auto* font = std::get_if<std::shared_ptr<Font>>(&item.content)) {
        context.state.font = *font;
        return std::exchange(context.font, object);
    }
    return SelectBitmap(context, object, item);
}

// Changes the state of a device context and answers what change(state) answers.
template <class Result, class Change>
Result ChangeState(HDC dc, Result on_failure, Change change) {
    const auto context = FindContext(dc);
    if (!context) return on_failure;
    const std::lock_guard lock(context->mutex);
    return change(context->state);
}

template <class Value>
void Store(Value* where, const Value& value) {
    if (where != nullptr) *where = value;
}

} // namespace

} // namespace kelvo::desktop

using namespace kelvo::desktop;

HDC GetDC(HWND window) {
    if (window == nullptr) return AddContext(DeviceContext::Kind::Screen, nullptr, nullptr);
    const std::lock_guard lock(WindowContextsMutex());
    auto surface = SurfaceOf(window);
    if (!surface) return nullptr;
    if (!surface->HasOwnContext()) {
        return AddContext(DeviceContext::Kind::Window, window, std::move(surface));
    }
    const HDC own = FindOwnContext(window);
    if (own != nullptr) return own;
    return AddContext(DeviceContext::Kind::OwnedByWindow, window, std::move(surface));
}

int ReleaseDC(HWND window, HDC dc) {
    const auto context = FindContext(dc);
    if (!context || context->window != window) return 0;
    switch (context->kind) {
    case DeviceContext::Kind::OwnedByWindow:
        return 1;
    case DeviceContext::Kind::Window:
    case DeviceContext::Kind::Screen:
        return FreeContext(dc) ? 1 : 0;
    default:
        return 0;
    }
}

HDC CreateDCA(LPCSTR driver, LPCSTR /*device*/, LPCSTR /*port*/, const void* /*init_data*/) {
    if (driver == nullptr || qstricmp(driver, "DISPLAY") != 0) return nullptr;
    return GetDC(nullptr);
}

HDC CreateCompatibleDC(HDC dc) {
    if (dc != nullptr && !FindContext(dc)) return nullptr;
    return AddBufferContext(std::make_shared<PixelBuffer>(QSize(1, 1)));
}

BOOL DeleteDC(HDC dc) {
    const auto context = FindContext(dc);
    if (!context) return FALSE;
    const bool is_own = context->kind == DeviceContext::Kind::Memory ||
                        context->kind == DeviceContext::Kind::Screen;
    return is_own && FreeContext(dc) ? TRUE : FALSE;
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ object) {
    const auto context = FindContext(dc);
    const std::lock_guard selection(SelectionMutex());
    const auto item = FindGraphicsItem(object);
    if (!context || !item) return nullptr;
    const std::lock_guard lock(context->mutex);
    const HGDIOBJ former = Select(*context, object, *item);
    if (former == nullptr) return nullptr;
    ++item->selections;
    CountSelection(former, -1);
    return former;
}

int SetMapMode(HDC dc, int mode) {
    if (mode != MM_TEXT && mode != MM_ANISOTROPIC) return 0;
    return ChangeState(
        dc, 0, [mode](DrawState& state) { return std::exchange(state.mapping.mode, mode); });
}

BOOL SetWindowOrgEx(HDC dc, int x, int y, POINT* former) {
    return ChangeState(dc, FALSE, [=](DrawState& state) {
        Store(former, std::exchange(state.mapping.window_origin, POINT{x, y}));
        return TRUE;
    });
}

BOOL SetViewportOrgEx(HDC dc, int x, int y, POINT* former) {
    return ChangeState(dc, FALSE, [=](DrawState& state) {
        Store(former, std::exchange(state.mapping.viewport_origin, POINT{x, y}));
        return TRUE;
    });
}

namespace {

BOOL SetExtent(HDC dc, SIZE Mapping::* which, SIZE extent, SIZE* former) {
    return ChangeState(dc, FALSE, [=](DrawState& state) {
        Store(former, state.mapping.*which);
        if (state.mapping.mode == MM_TEXT) return TRUE;
        if (extent.cx == 0 || extent.cy == 0) return FALSE;
        state.mapping.*which = extent;
        return TRUE;
    });
}

} // namespace

BOOL SetWindowExtEx(HDC dc, int width, int height, SIZE* former) {
    return SetExtent(dc, &Mapping::window_extent, {width, height}, former);
}

BOOL SetViewportExtEx(HDC dc, int width, int height, SIZE* former) {
    return SetExtent(dc, &Mapping::viewport_extent, {width, height}, former);
}

int SetStretchBltMode(HDC dc, int mode) {
    if (mode < BLACKONWHITE || mode > HALFTONE) return 0;
    return ChangeState(
        dc, 0, [mode](DrawState& state) { return std::exchange(state.stretch_mode, mode); });
}

BOOL MoveToEx(HDC dc, int x, int y, POINT* former) {
    return ChangeState(dc, FALSE, [=](DrawState& state) {
        Store(former, std::exchange(state.position, POINT{x, y}));
        return TRUE;
    });
}

BOOL GetCurrentPositionEx(HDC dc, POINT* position) {
    return ChangeState(dc, FALSE, [position](const DrawState& state) {
        Store(position, state.position);
        return position != nullptr ? TRUE : FALSE;
    });
}

UINT SetTextAlign(HDC dc, UINT alignment) {
    return ChangeState(dc, GDI_ERROR, [alignment](DrawState& state) {
        return std::exchange(state.text_alignment, alignment);
    });
}

COLORREF SetTextColor(HDC dc, COLORREF colour) {
    return ChangeState(dc, CLR_INVALID, [colour](DrawState& state) {
        return std::exchange(state.text_colour, colour);
    });
}

COLORREF SetBkColor(HDC dc, COLORREF colour) {
    return ChangeState(dc, CLR_INVALID, [colour](DrawState& state) {
        return std::exchange(state.background_colour, colour);
    });
}

int SetBkMode(HDC dc, int mode) {
    if (mode != TRANSPARENT && mode != OPAQUE) return 0;
    return ChangeState(
        dc, 0, [mode](DrawState& state) { return std::exchange(state.background_mode, mode); });
}
