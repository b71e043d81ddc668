#include "platform/desktop/controls/ControlFace.h"

#include "platform/desktop/Surface.h"
#include "platform/desktop/windows.h"

#include <QPainter>

#include <algorithm>
#include <cstring>
#include <utility>

namespace kelvo::desktop {

namespace {

/// The smallest rectangle outside of which two pictures of one size are the same.
QRect Difference(const QImage& a, const QImage& b) {
    QRect differing;
    for (int y = 0; y < a.height(); ++y) {
        const auto* const left = reinterpret_cast<const QRgb*>(a.constScanLine(y));
        const auto* const right = reinterpret_cast<const QRgb*>(b.constScanLine(y));
        const auto [first, unused] = std::mismatch(left, left + a.width(), right);
        if (first == left + a.width()) continue;
        auto last = static_cast<std::ptrdiff_t>(a.width()) - 1;
        while (left[last] == right[last])
            --last;
        const auto begin = static_cast<int>(first - left);
        differing |= QRect(begin, y, static_cast<int>(last) - begin + 1, 1);
    }
    return differing;
}

} // namespace

void ControlFace::Attach(Surface& surface, QWidget* widget) {
    widget_ = widget;
    surface.OnDelivery([this](const QRect& area) { OnDrawn(area); });
}

void ControlFace::OnDrawn(const QRect& area) {
    if (!widget_) return;
    shows_surface_ = true;
    widget_->update(area);
    if (auto* const scrolled = qobject_cast<QAbstractScrollArea*>(widget_.data())) {
        QWidget* const viewport = scrolled->viewport();
        viewport->update(area.translated(-viewport->mapTo(scrolled, QPoint(0, 0))));
    }
}

bool ControlFace::Paint(QWidget& target, const QRegion& region) {
    if (rendering_ || !widget_) return false;
    CompareSoon();
    const auto surface = SurfaceOf(window_);
    if (!shows_surface_ || !surface) return false;
    const QPoint corner = target.mapTo(widget_.data(), QPoint(0, 0));
    QPainter painter(&target);
    painter.translate(-corner);
    for (const QRect& area : region.translated(corner))
        surface->CopyTo(painter, area);
    return true;
}

// Why a paint event comes, nobody says: the window may have been uncovered, something may have been
// drawn on the surface, or the widget may have changed. Only the last concerns the procedure.
void ControlFace::CompareSoon() {
    if (last_look_.isNull() || std::exchange(comparing_soon_, true)) return;
    QMetaObject::invokeMethod(
        widget_.data(), [face = shared_from_this()] { face->Compare(); }, Qt::QueuedConnection);
}

void ControlFace::Compare() {
    comparing_soon_ = false;
    if (!widget_ || ::IsWindow(window_) == FALSE) return;
    const QImage look = Look();
    const QRect changed =
        look.size() == last_look_.size() ? Difference(look, last_look_) : look.rect();
    if (changed.isEmpty()) return;
    const RECT area{changed.left(), changed.top(), changed.right() + 1, changed.bottom() + 1};
    ::InvalidateRect(window_, &area, FALSE);
}

QImage ControlFace::Look() {
    QImage look(widget_->size(), QImage::Format_ARGB32_Premultiplied);
    if (look.isNull()) return look;
    look.fill(Qt::transparent);
    rendering_ = true;
    widget_->render(&look, QPoint(0, 0), QRegion(widget_->rect()),
                    QWidget::DrawWindowBackground | QWidget::DrawChildren);
    rendering_ = false;
    return look;
}

QImage ControlFace::GroundOf(const QRect& area) const {
    const HWND parent = ::GetParent(window_);
    const auto below = SurfaceOf(parent);
    POINT corner{0, 0};
    ::ClientToScreen(window_, &corner);
    ::ScreenToClient(parent, &corner);
    return below ? below->Snapshot().copy(area.translated(corner.x, corner.y)) : QImage();
}

void ControlFace::Render(Surface& surface, const QRect& area, const QBrush& background) {
    if (!widget_ || area.isEmpty()) return;
    // Painted beside the surface, so that nobody waits for its lock meanwhile.
    last_look_ = Look();
    const bool is_transparent = background.style() == Qt::NoBrush;
    const QImage ground = is_transparent ? GroundOf(area) : QImage();
    {
        const std::lock_guard lock(surface.Mutex());
        if (surface.Gone()) return;
        QPainter painter(&surface.Image());
        if (is_transparent) {
            painter.drawImage(area.topLeft(), ground);
        } else {
            painter.fillRect(area, background);
        }
        painter.drawImage(area.topLeft(), last_look_, area);
    }
    if (shows_surface_) surface.Changed(area);
}

} // namespace kelvo::desktop
