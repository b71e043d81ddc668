// Fillings, lines and shapes.

#include "platform/desktop/DeviceContext.h"

#include <QPainter>
#include <QPolygon>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

using namespace kelvo::desktop;

namespace {

QPen PenFrom(const Pen& pen) {
    if (pen.style == PS_NULL) return Qt::NoPen;
    Qt::PenStyle style = Qt::SolidLine;
    if (pen.style == PS_DASH) style = Qt::DashLine;
    if (pen.style == PS_DOT) style = Qt::DotLine;
    return QPen(QColor(PixelFrom(pen.colour)), pen.width, style, Qt::RoundCap, Qt::RoundJoin);
}

QBrush BrushFrom(const Brush& brush) {
    return brush.hollow ? QBrush(Qt::NoBrush) : QBrush(QColor(PixelFrom(brush.colour)));
}

QPoint MappedPoint(const Mapping& mapping, int x, int y) {
    return {mapping.X(x), mapping.Y(y)};
}

/// A shape on one with the pen and brush of the state.
template <class Paint>
BOOL PaintShape(const DrawState& state, const QRect& bounds, Paint paint) {
    const bool is_drawn = DrawOn(state, [&](QImage& image, const QRect& clip) {
        QPainter painter(&image);
        painter.setClipRect(clip);
        painter.setPen(PenFrom(state.pen));
        painter.setBrush(BrushFrom(state.brush));
        paint(painter);
        const int margin = state.pen.width + 1;
        return bounds.adjusted(-margin, -margin, margin, margin);
    });
    return is_drawn ? TRUE : FALSE;
}

/// The next pixel of a line from one point towards another, in eight directions.
class LineSteps {
public:
    LineSteps(QPoint from, QPoint to)
        : at_(from), step_x_(to.x() < from.x() ? -1 : 1), step_y_(to.y() < from.y() ? -1 : 1),
          length_x_(std::abs(std::int64_t{to.x()} - from.x())),
          length_y_(std::abs(std::int64_t{to.y()} - from.y())), error_(length_x_ - length_y_) {}

    std::int64_t Count() const { return std::max(length_x_, length_y_); }
    QPoint At() const { return at_; }
    void Next() {
        const std::int64_t doubled = 2 * error_;
        if (doubled >= -length_y_) {
            error_ -= length_y_;
            at_.rx() += step_x_;
        }
        if (doubled <= length_x_) {
            error_ += length_x_;
            at_.ry() += step_y_;
        }
    }

private:
    QPoint at_;
    int step_x_;
    int step_y_;
    std::int64_t length_x_;
    std::int64_t length_y_;
    std::int64_t error_;
};

// One pixel wide and solid, without the end point.
QRect DrawThinLine(QImage& image, const QRect& clip, QPoint from, QPoint to, QRgb pixel) {
    LineSteps line(from, to);
    for (std::int64_t left = line.Count(); left > 0; --left, line.Next()) {
        const QPoint at = line.At();
        if (!clip.contains(at)) continue;
        reinterpret_cast<QRgb*>(image.scanLine(at.y()))[at.x()] = pixel;
    }
    return QRect(QPoint(std::min(from.x(), to.x()), std::min(from.y(), to.y())),
                 QPoint(std::max(from.x(), to.x()), std::max(from.y(), to.y())));
}

bool DrawLine(const DrawState& state, QPoint from, QPoint to) {
    if (state.pen.width > 1 || state.pen.style != PS_SOLID) {
        return PaintShape(state, QRect(from, to).normalized(),
                          [&](QPainter& painter) { painter.drawLine(from, to); }) != FALSE;
    }
    return DrawOn(state, [&](QImage& image, const QRect& clip) {
        return DrawThinLine(image, clip, from, to, PixelFrom(state.pen.colour));
    });
}

constexpr int kFullTurn = 360 * 16;

// Sixteenths of a degree, counter-clockwise from three o'clock, of the ray to a point, in the
// circle that the ellipse is squeezed from.
int AngleOf(const QRectF& ellipse, QPoint towards) {
    const double x = (towards.x() - ellipse.center().x()) / std::max(ellipse.width(), 1.0);
    const double y = (ellipse.center().y() - towards.y()) / std::max(ellipse.height(), 1.0);
    const double degrees = std::atan2(y, x) * 180 / std::numbers::pi;
    return static_cast<int>(std::lround(degrees * 16));
}

// A pen's line lies in the middle of its pixels: right and bottom of the shape lie outside.
QRect OutlineOf(const QRect& rect) {
    return rect.adjusted(0, 0, -1, -1);
}

} // namespace

int FillRect(HDC dc, const RECT* rectangle, HBRUSH brush) {
    const auto state = StateOf(dc);
    Brush filling;
    if (!state || rectangle == nullptr || !FindBrush(brush, filling)) return 0;
    // Unlike the corners of a shape, those of a filling are not put in order: an area that ends
    // before it begins is empty.
    const bool is_empty =
        rectangle->right <= rectangle->left || rectangle->bottom <= rectangle->top;
    const QRect area = MappedRect(state->mapping, rectangle->left, rectangle->top, rectangle->right,
                                  rectangle->bottom);
    const bool is_drawn = DrawOn(*state, [&](QImage& image, const QRect& clip) {
        if (filling.hollow || is_empty) return QRect();
        const QRect visible = area & clip;
        for (int y = visible.top(); y <= visible.bottom(); ++y) {
            auto* row = reinterpret_cast<QRgb*>(image.scanLine(y)) + visible.left();
            std::fill_n(row, visible.width(), PixelFrom(filling.colour));
        }
        return visible;
    });
    return is_drawn ? 1 : 0;
}

BOOL LineTo(HDC dc, int x, int y) {
    const auto state = StateOf(dc);
    if (!state) return FALSE;
    const QPoint from = MappedPoint(state->mapping, state->position.x, state->position.y);
    const QPoint to = MappedPoint(state->mapping, x, y);
    if (state->pen.style != PS_NULL && !DrawLine(*state, from, to)) return FALSE;
    return MoveToEx(dc, x, y, nullptr);
}

BOOL Polyline(HDC dc, const POINT* points, int count) {
    const auto state = StateOf(dc);
    if (!state || points == nullptr || count < 2) return FALSE;
    for (int i = 1; i < count && state->pen.style != PS_NULL; ++i) {
        const QPoint from = MappedPoint(state->mapping, points[i - 1].x, points[i - 1].y);
        const QPoint to = MappedPoint(state->mapping, points[i].x, points[i].y);
        if (!DrawLine(*state, from, to)) return FALSE;
    }
    return TRUE;
}

BOOL Rectangle(HDC dc, int left, int top, int right, int bottom) {
    const auto state = StateOf(dc);
    if (!state) return FALSE;
    const QRect area = MappedRect(state->mapping, left, top, right, bottom);
    return PaintShape(*state, area, [&](QPainter& painter) {
        if (!area.isEmpty()) painter.drawRect(OutlineOf(area));
    });
}

BOOL Ellipse(HDC dc, int left, int top, int right, int bottom) {
    const auto state = StateOf(dc);
    if (!state) return FALSE;
    const QRect area = MappedRect(state->mapping, left, top, right, bottom);
    return PaintShape(*state, area, [&](QPainter& painter) {
        if (!area.isEmpty()) painter.drawEllipse(OutlineOf(area));
    });
}

BOOL Arc(HDC dc, int left, int top, int right, int bottom, int start_x, int start_y, int end_x,
         int end_y) {
    const auto state = StateOf(dc);
    if (!state) return FALSE;
    const QRect area = MappedRect(state->mapping, left, top, right, bottom);
    const QRectF ellipse(OutlineOf(area));
    const int start = AngleOf(ellipse, MappedPoint(state->mapping, start_x, start_y));
    const int end = AngleOf(ellipse, MappedPoint(state->mapping, end_x, end_y));
    const int span = ((end - start) % kFullTurn + kFullTurn) % kFullTurn;
    return PaintShape(*state, area, [&](QPainter& painter) {
        painter.setBrush(Qt::NoBrush);
        // Two rays in one direction mean the whole ellipse.
        if (!area.isEmpty()) painter.drawArc(ellipse, start, span == 0 ? kFullTurn : span);
    });
}
