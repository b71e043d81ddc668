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

} // namespace

ClientWidget::ClientWidget(std::shared_ptr<Surface> surface, QWidget* parent)
    : QWidget(parent), surface_(std::move(surface)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setMouseTracking(true);
}

QRect ClientWidget::WithEdge() const {
    return geometry().adjusted(-kEdge, -kEdge, kEdge, kEdge);
}

void ClientWidget::Place(const QRect& geometry) {
    if (has_edge_ && parentWidget() != nullptr) parentWidget()->update(WithEdge());
    setGeometry(geometry);
    if (has_edge_ && parentWidget() != nullptr) parentWidget()->update(WithEdge());
}

void ClientWidget::SetStaticEdge(bool has_edge) {
    has_edge_ = has_edge;
    if (parentWidget() != nullptr) parentWidget()->update(WithEdge());
}

void ClientWidget::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    surface_->CopyTo(painter, event->rect());
    for (const QObject* child : children()) {
        const auto* inner = dynamic_cast<const ClientWidget*>(child);
        if (inner == nullptr || !inner->has_edge_ || !inner->isVisible()) continue;
        const QRect edge = inner->WithEdge();
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawLine(edge.bottomLeft(), edge.topLeft());
        painter.drawLine(edge.topLeft(), edge.topRight());
        painter.setPen(palette().color(QPalette::Light));
        painter.drawLine(edge.bottomLeft(), edge.bottomRight());
        painter.drawLine(edge.bottomRight(), edge.topRight());
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
    resize(size.width(), size.height() + BarHeight());
    if (client_) client_->resize(size);
    LayOut();
}

QSize FrameWidget::RoomForClient() const {
    return {width(), std::max(0, height() - BarHeight())};
}

void FrameWidget::LayOut() {
    const int bar_height = BarHeight();
    if (bar_height > 0) menu_bar_->setGeometry(0, 0, width(), bar_height);
    if (client_) client_->move(0, bar_height);
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
