#pragma once
// The widgets behind the windows. A top-level window is a frame that holds the menu bar and the
// client area; a child is a client area inside that of its parent. UI thread only.

#include "platform/base/types.h"

#include <QBrush>
#include <QMenuBar>
#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <optional>

namespace kelvo::desktop {

class Control;
class Surface;

/// What is drawn around a child, on its parent.
enum class ChildFrame : std::uint8_t { None, StaticEdge, Sizing };

/// Copies the surface of its window to the screen, and draws the frames around its children.
class ClientWidget final : public QWidget {
public:
    ClientWidget(std::shared_ptr<Surface> surface, QWidget* parent);

    /// Moves and sizes a child, its frame on the parent included.
    void Place(const QRect& geometry);
    void SetChildFrame(ChildFrame frame);
    /// Shows a control in place of the surface; it gets the whole client area.
    void HoldControl(QWidget* control);
    /// What lies behind a control: without a value the desktop's own, Qt::NoBrush the parent.
    void SetControlBackground(const std::optional<QBrush>& background);
    QBrush ControlBackground() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QRect WithFrame() const;
    void UpdateFrame() const;
    void DrawFrameOn(QPainter& painter) const;

    const std::shared_ptr<Surface> surface_;
    ChildFrame frame_ = ChildFrame::None;
    QPointer<QWidget> control_;
    std::optional<QBrush> control_background_;
};

/// The frame of a top-level window, as the window manager knows it.
class FrameWidget final : public QWidget {
public:
    explicit FrameWidget(Qt::WindowFlags flags);

    void SetClient(ClientWidget* client) { client_ = client; }
    /// Without a caption the window manager draws no frame; this one does.
    void SetBorder(int width) { border_ = width; }
    /// The bar that menus fill; made when it is first asked for.
    QMenuBar& MenuBar();
    void ShowMenuBar(bool shown);
    /// Gives the client area this size: the frame takes it and the real bar's height.
    void ResizeClient(QSize size);
    /// What the frame's present size leaves for the client area.
    QSize RoomForClient() const;
    /// Puts the bar and the client area where they belong.
    void LayOut();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int BarHeight() const;

    QMenuBar* menu_bar_ = nullptr;
    QPointer<ClientWidget> client_;
    int border_ = 0;
};

struct WindowView {
    QPointer<FrameWidget> frame; ///< of top-level windows
    QPointer<ClientWidget> client;
    std::shared_ptr<Surface> surface;
    std::shared_ptr<Control> control; ///< of windows of a control class
    HMENU menu = nullptr;
};

/// @return null for no window; else valid until that window is destroyed.
WindowView* ViewOf(HWND window);
void AddView(HWND window, WindowView view);
/// Hides the widgets and has them deleted later: one of them may be handling an event right now.
void RemoveView(HWND window);
/// The frame of the top-level window that the window lies in.
FrameWidget* FrameOf(HWND window);

} // namespace kelvo::desktop
