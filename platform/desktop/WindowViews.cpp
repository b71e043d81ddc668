#include "platform/desktop/WindowViews.h"

#include "platform/desktop/Surface.h"
#include "platform/desktop/Window.h"

#include <QPaintEvent>
#include <QPainter>

#include <map>

namespace kelvo::desktop {

namespace {

std::map<HWND, WindowView>& Views() {
    static auto* const views = new std::map<HWND, WindowView>; // outlives the program's objects
    return *views;
}

constexpr int kEdge = 1;
constexpr int kSizingFrame = 4;

/// A line around the rectangle, lit from one corner.
void DrawEdge(QPainter& painter, const QRect& edge, const QColor& top_left,
              const QColor& bottom_right) {
    painter.setPen(top_left);
    painter.drawLine(edge.bottomLeft(), edge.topLeft());
    painter.drawLine(edge.topLeft(), edge.topRight());
    painter.setPen(bottom_right);
    painter.drawLine(edge.bottomLeft(), edge.bottomRight());
    painter.drawLine(edge.bottomRight(), edge.topRight());
}

} // namespace

ClientWidget::ClientWidget(std::shared_ptr<Surface> surface, QWidget* parent)
    : QWidget(parent), surface_(std::move(surface)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setMouseTracking(true);
}

QRect ClientWidget::WithFrame() const {
    const int width = frame_ == ChildFrame::Sizing ? kSizingFrame : kEdge;
    return geometry().adjusted(-width, -width, width, width);
}

void ClientWidget::UpdateFrame() const {
    if (frame_ != ChildFrame::None && parentWidget() != nullptr) {
        parentWidget()->update(WithFrame());
    }
}

void ClientWidget::Place(const QRect& geometry) {
    UpdateFrame();
    setGeometry(geometry);
    UpdateFrame();
}

void ClientWidget::SetChildFrame(ChildFrame frame) {
    frame_ = frame;
    UpdateFrame();
}

void ClientWidget::DrawFrameOn(QPainter& painter) const {
    const QRect outer = WithFrame();
    const QColor light = palette().color(QPalette::Light);
    if (frame_ == ChildFrame::StaticEdge) {
        DrawEdge(painter, outer, palette().color(QPalette::Mid), light);
        return;
    }
    QRegion ring(outer);
    ring -= geometry();
    for (const QRect& part : ring)
        painter.fillRect(part, palette().color(QPalette::Window));
    DrawEdge(painter, outer, light, palette().color(QPalette::Dark));
}

void ClientWidget::HoldControl(QWidget* control) {
    control_ = control;
    control_->setGeometry(rect());
    setFocusProxy(control_);
}

void ClientWidget::SetControlBackground(const std::optional<QBrush>& background) {
    control_background_ = background;
    setAttribute(Qt::WA_OpaquePaintEvent, ControlBackground().style() != Qt::NoBrush);
    update();
}

QBrush ClientWidget::ControlBackground() const {
    return control_background_.value_or(palette().brush(QPalette::Window));
}

void ClientWidget::resizeEvent(QResizeEvent* /*event*/) {
    if (control_) control_->setGeometry(rect());
}

void ClientWidget::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    if (!control_) {
        surface_->CopyTo(painter, event->rect());
    } else if (const QBrush background = ControlBackground(); background.style() != Qt::NoBrush) {
        painter.fillRect(event->rect(), background);
    }
    for (const QObject* child : children()) {
        const auto* inner = dynamic_cast<const ClientWidget*>(child);
        if (inner == nullptr || inner->frame_ == ChildFrame::None || !inner->isVisible()) continue;
        inner->DrawFrameOn(painter);
    }
}

FrameWidget::FrameWidget(Qt::WindowFlags flags) : QWidget(nullptr, flags) {}

QMenuBar& FrameWidget::MenuBar() {
    if (menu_bar_ == nullptr) {
        menu_bar_ = new QMenuBar(this); // deleted with the frame
        menu_bar_->setNativeMenuBar(false);
        menu_bar_->hide();
    }
    return *menu_bar_;
}

void FrameWidget::ShowMenuBar(bool shown) {
    if (shown || menu_bar_ != nullptr) MenuBar().setVisible(shown);
}

int FrameWidget::BarHeight() const {
    const bool has_bar = menu_bar_ != nullptr && !menu_bar_->isHidden();
    return has_bar ? menu_bar_->sizeHint().height() : 0;
}

void FrameWidget::ResizeClient(QSize size) {
    resize(size.width() + 2 * border_, size.height() + BarHeight() + 2 * border_);
    if (client_) client_->resize(size);
    LayOut();
}

QSize FrameWidget::RoomForClient() const {
    return {std::max(0, width() - 2 * border_), std::max(0, height() - BarHeight() - 2 * border_)};
}

void FrameWidget::LayOut() {
    const int bar_height = BarHeight();
    if (bar_height > 0) {
        menu_bar_->setGeometry(border_, border_, width() - 2 * border_, bar_height);
    }
    if (client_) client_->move(border_, border_ + bar_height);
}

void FrameWidget::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    if (border_ == 0) return;
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    const QColor line = palette().color(QPalette::Shadow);
    DrawEdge(painter, rect(), line, line);
}

WindowView* ViewOf(HWND window) {
    const auto found = Views().find(window);
    return found == Views().end() ? nullptr : &found->second;
}

void AddView(HWND window, WindowView view) {
    Views()[window] = std::move(view);
}

void RemoveView(HWND window) {
    const auto node = Views().extract(window);
    if (node.empty()) return;
    QWidget* outermost = node.mapped().frame ? static_cast<QWidget*>(node.mapped().frame.data())
                                             : node.mapped().client.data();
    if (outermost == nullptr) return; // its parent has taken it along
    outermost->hide();
    outermost->deleteLater();
}

FrameWidget* FrameOf(HWND window) {
    const WindowView* view = ViewOf(window);
    if (view == nullptr) return nullptr;
    if (view->frame) return view->frame;
    return view->client ? dynamic_cast<FrameWidget*>(view->client->window()) : nullptr;
}

QWidget* WidgetOf(HWND window) {
    const WindowView* view = ViewOf(window);
    return view == nullptr ? nullptr : view->client.data();
}

} // namespace kelvo::desktop
