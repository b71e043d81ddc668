#include "platform/desktop/controls/ControlFace.h"

#include "platform/desktop/Surface.h"
#include "platform/desktop/windows.h"

#include <QPainter>

#include <cmath>

namespace kelvo::desktop {

void ControlFace::Attach(Surface& surface, QWidget* widget) {
    widget_ = widget;
    surface.OnDelivery([this](const QRect& area) { OnDrawn(area); });
}

void ControlFace::OnDrawn(const QRect& area) {
    if (!widget_) return;
    shows_surface_ = true;
    delivered_ += area;
    widget_->update(area);
    if (auto* const scrolled = qobject_cast<QAbstractScrollArea*>(widget_.data())) {
        QWidget* const viewport = scrolled->viewport();
        viewport->update(area.translated(-viewport->mapTo(scrolled, QPoint(0, 0))));
    }
}

bool ControlFace::Paint(QWidget& target, const QRegion& region) {
    if (rendering_ || !widget_) return false;
    const QPoint corner = target.mapTo(widget_.data(), QPoint(0, 0));
    const QRegion painted = region.translated(corner);
    // The widget has changed by itself: the window's procedure is to know.
    if (!painted.subtracted(delivered_).isEmpty()) {
        const QRect area = painted.boundingRect();
        const RECT rect{area.left(), area.top(), area.right() + 1, area.bottom() + 1};
        ::InvalidateRect(window_, &rect, FALSE);
    }
    delivered_ -= painted;
    const auto surface = SurfaceOf(window_);
    if (!shows_surface_ || !surface) return false;
    QPainter painter(&target);
    painter.translate(-corner);
    for (const QRect& area : painted)
        surface->CopyTo(painter, area);
    return true;
}

void ControlFace::Render(Surface& surface, const QRect& area, const QBrush& background) {
    if (!widget_ || area.isEmpty()) return;
    // Painted beside the surface, so that nobody waits for its lock meanwhile.
    QImage look(surface.Size(), QImage::Format_RGB32);
    if (look.isNull()) return;
    QPainter painter(&look);
    if (background.style() == Qt::NoBrush) {
        surface.CopyTo(painter, look.rect());
    } else {
        painter.fillRect(look.rect(), background);
    }
    rendering_ = true;
    widget_->render(&painter, QPoint(0, 0), QRegion(widget_->rect()),
                    QWidget::DrawWindowBackground | QWidget::DrawChildren);
    rendering_ = false;
    painter.end();
    {
        const std::lock_guard lock(surface.Mutex());
        if (surface.Gone()) return;
        QPainter copy(&surface.Image());
        copy.drawImage(area.topLeft(), look, area);
    }
    if (shows_surface_) surface.Changed(area);
}

} // namespace kelvo::desktop
