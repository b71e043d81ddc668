#include "platform/desktop/Surface.h"

#include "platform/base/Immortal.h"
#include "platform/desktop/DeviceContext.h"
#include "platform/desktop/Window.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <unordered_map>

namespace kelvo::desktop {

namespace {

QRect RectFrom(const RECT& rect) {
    return QRect(QPoint(rect.left, rect.top), QPoint(rect.right - 1, rect.bottom - 1));
}

std::atomic<int> living_surfaces{0};

struct Registry {
    std::mutex mutex;
    std::unordered_map<HWND, std::shared_ptr<Surface>> surfaces; ///< under mutex
};

Registry& SurfaceRegistry() {
    static platform::Immortal<Registry> registry;
    return *registry;
}

} // namespace

PixelBuffer::PixelBuffer(QSize size) : image_(size.expandedTo({0, 0}), QImage::Format_RGB32) {
    image_.fill(Qt::black);
}

void PixelBuffer::Changed(const QRect& /*area*/) {}

Surface::Surface(HWND window, QSize size, OwnContext own_context)
    : PixelBuffer(size), window_(window), own_context_(own_context) {
    image_.fill(Qt::white);
    ++living_surfaces;
}

Surface::~Surface() {
    --living_surfaces;
}

void Surface::Attach(QWidget* widget) {
    widget_ = widget;
}

void Surface::OnDelivery(std::function<void(const QRect&)> listener) {
    listener_ = std::move(listener);
}

void Surface::Resize(QSize size) {
    // The new pixels are made before the lock is taken: a drawing thread waits for the copy alone.
    QImage resized(size.expandedTo({0, 0}), QImage::Format_RGB32);
    resized.fill(Qt::white);
    const std::lock_guard lock(mutex_);
    if (gone_) return;
    const int width = std::min(image_.width(), resized.width());
    for (int y = 0; y < std::min(image_.height(), resized.height()); ++y) {
        std::memcpy(resized.scanLine(y), image_.constScanLine(y),
                    static_cast<std::size_t>(width) * sizeof(QRgb));
    }
    image_ = std::move(resized);
    pending_.area &= image_.rect();
}

void Surface::Close() {
    const std::lock_guard lock(mutex_);
    gone_ = true;
    image_ = QImage();
    pending_ = {};
    widget_ = nullptr;
    listener_ = nullptr;
}

QSize Surface::Size() {
    const std::lock_guard lock(mutex_);
    return image_.size();
}

void Surface::CopyTo(QPainter& painter, const QRect& area) {
    const std::lock_guard lock(mutex_);
    const QRect copied = area & image_.rect();
    if (copied.isEmpty()) return;
    // On a screen of finer pixels by a fraction, whole pixels would differ in width.
    const double ratio = painter.device()->devicePixelRatio();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, ratio != std::floor(ratio));
    painter.drawImage(copied.topLeft(), image_, copied);
}

QImage Surface::Snapshot() {
    const std::lock_guard lock(mutex_);
    return image_.copy();
}

void Surface::Invalidate(const RECT* area, Erase erase) {
    const std::lock_guard lock(mutex_);
    const QRect added = area != nullptr ? RectFrom(*area) & image_.rect() : image_.rect();
    if (added.isEmpty()) return;
    pending_.area |= added;
    if (erase == Erase::Yes) pending_.erase = Erase::Yes;
}

void Surface::Validate(const RECT* area) {
    const std::lock_guard lock(mutex_);
    if (area == nullptr) {
        pending_.area = QRect();
    } else {
        pending_.area = QRegion(pending_.area).subtracted(RectFrom(*area)).boundingRect();
    }
    if (pending_.area.isEmpty()) pending_ = {};
}

bool Surface::NeedsPaint() {
    return !Pending().area.isEmpty();
}

PendingPaint Surface::Pending() {
    const std::lock_guard lock(mutex_);
    return pending_;
}

PendingPaint Surface::TakePending() {
    const std::lock_guard lock(mutex_);
    return std::exchange(pending_, {});
}

void Surface::Changed(const QRect& area) {
    if (area.isEmpty()) return;
    {
        const std::lock_guard lock(changed_mutex_);
        const bool is_first = changed_.isEmpty();
        changed_ |= area;
        if (!is_first) return; // the UI thread has been woken for the earlier one
    }
    DeliverSoon(weak_from_this());
}

void Surface::DeliverChanges() {
    QRect changed;
    {
        const std::lock_guard lock(changed_mutex_);
        changed = std::exchange(changed_, QRect());
    }
    if (!widget_ || changed.isEmpty()) return;
    if (listener_) {
        listener_(changed);
    } else {
        widget_->update(changed);
    }
}

void RegisterSurface(const std::shared_ptr<Surface>& surface) {
    Registry& registry = SurfaceRegistry();
    const std::lock_guard lock(registry.mutex);
    registry.surfaces[surface->Window()] = surface;
}

void UnregisterSurface(HWND window) {
    std::shared_ptr<Surface> surface;
    {
        Registry& registry = SurfaceRegistry();
        const std::lock_guard lock(registry.mutex);
        auto node = registry.surfaces.extract(window);
        if (!node.empty()) surface = std::move(node.mapped());
    }
    if (surface) surface->Close();
    FreeContextsOf(window);
}

int CountSurfaces() {
    return living_surfaces;
}

std::shared_ptr<Surface> SurfaceOf(HWND window) {
    Registry& registry = SurfaceRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.surfaces.find(window);
    return found == registry.surfaces.end() ? nullptr : found->second;
}

} // namespace kelvo::desktop
