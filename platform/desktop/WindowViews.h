#pragma once
// The widgets behind the windows. A top-level window is a frame that holds the menu bar and the
// client area; a child is a client area inside that of its parent. UI thread only.

#include "platform/base/types.h"

#include <QMenuBar>
#include <QPointer>
#include <QWidget>

#include <memory>

namespace kelvo::desktop {

class Surface;

/// Copies the surface of its window to the screen, and draws the sunken edges around its children.
class ClientWidget final : public QWidget {
public:
    ClientWidget(std::shared_ptr<Surface> surface, QWidget* parent);

    /// Moves and sizes a child, its edge on the parent included.
    void Place(const QRect& geometry);
    void SetStaticEdge(bool has_edge);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRect WithEdge() const;

    const std::shared_ptr<Surface> surface_;
    bool has_edge_ = false;
};

/// The frame of a top-level window, as the window manager knows it.
class FrameWidget final : public QWidget {
public:
    explicit FrameWidget(Qt::WindowFlags flags);

    void SetClient(ClientWidget* client) { client_ = client; }
    /// The bar that menus fill; made when it is first asked for.
    QMenuBar& MenuBar();
    void ShowMenuBar(bool shown);
    /// Gives the client area this size: the frame takes it and the real bar's height.
    void ResizeClient(QSize size);
    /// What the frame's present size leaves for the client area.
    QSize RoomForClient() const;
    /// Puts the bar and the client area where they belong.
    void LayOut();

private:
    int BarHeight() const;

    QMenuBar* menu_bar_ = nullptr;
    QPointer<ClientWidget> client_;
};

struct WindowView {
    QPointer<FrameWidget> frame; ///< of top-level windows
    QPointer<ClientWidget> client;
    std::shared_ptr<Surface> surface;
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
