#pragma once
// How a control looks on the screen. As long as nobody but the toolkit draws, its widget paints
// itself, as sharp as the screen allows, and a copy of it is kept in the window's surface. As soon
// as somebody draws on the window through a device context, the surface is what is shown, and
// WM_PAINT brings the widget's look into it: what was drawn before, instead or afterwards then
// stays where it was drawn. UI thread only.

#include "platform/base/types.h"

#include <QAbstractScrollArea>
#include <QImage>
#include <QPaintEvent>
#include <QPointer>
#include <QRegion>
#include <QWidget>

#include <concepts>
#include <memory>
#include <utility>

namespace kelvo::desktop {

class Surface;

class ControlFace : public std::enable_shared_from_this<ControlFace> {
public:
    explicit ControlFace(HWND window) : window_(window) {}

    /// Follows what is drawn on the surface.
    void Attach(Surface& surface, QWidget* widget);
    /// From now on the surface is shown.
    void ShowSurface() { shows_surface_ = true; }
    bool ShowsSurface() const { return shows_surface_; }

    /// From a paint event of the widget: looks soon whether the widget has changed, which is then
    /// painted by WM_PAINT. @return true when the surface was shown.
    bool Paint(QWidget& target, const QRegion& region);
    /// Brings the widget's present look into the surface, over the given background; Qt::NoBrush:
    /// over what the parent shows there.
    void Render(Surface& surface, const QRect& area, const QBrush& background);

private:
    void OnDrawn(const QRect& area);
    void CompareSoon();
    void Compare();
    QImage Look();
    QImage GroundOf(const QRect& area) const;

    const HWND window_;
    QPointer<QWidget> widget_;
    QImage last_look_; ///< of the widget alone, when it was last brought into the surface
    bool shows_surface_ = false;
    bool rendering_ = false;
    bool comparing_soon_ = false;
};

/// A widget of the toolkit whose face may be the surface.
template <class Base>
class Painted final : public Base {
public:
    template <class... Arguments>
    Painted(std::shared_ptr<ControlFace> face, QWidget* parent, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), face_(std::move(face)) {
        this->setParent(parent);
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        QWidget* target = this;
        if constexpr (std::derived_from<Base, QAbstractScrollArea>) target = this->viewport();
        if (!face_->Paint(*target, event->region())) Base::paintEvent(event);
    }

private:
    const std::shared_ptr<ControlFace> face_;
};

} // namespace kelvo::desktop
