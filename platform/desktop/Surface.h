#pragma once
// The pixels of a window: drawn from any thread, copied to the screen by the widget's paint event.
//
// A window makes one Surface when it is created, registers it under its handle, attaches the widget
// that shows it, resizes it with the client area, and closes it when the window is destroyed. Every
// drawing call marks the changed rectangle; the first change wakes the UI thread once, which then
// asks the widget to update what has changed. What is invalid (WM_PAINT) is kept here, too, so that
// BeginPaint and InvalidateRect meet in one place.

#include "platform/base/types.h"

#include <QImage>
#include <QPainter>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QWidget>

#include <functional>
#include <memory>
#include <mutex>

namespace kelvo::desktop {

/// 32-bit pixels (0xffRRGGBB) and the lock that everybody who touches them holds.
class PixelBuffer {
public:
    explicit PixelBuffer(QSize size);
    virtual ~PixelBuffer() = default;
    PixelBuffer(const PixelBuffer&) = delete;
    PixelBuffer& operator=(const PixelBuffer&) = delete;

    std::mutex& Mutex() { return mutex_; }
    /// Only with Mutex() held; of no pixels when the size is 0 or the buffer has gone.
    QImage& Image() { return image_; }
    /// Only with Mutex() held: whether drawing is to fail, because the window was destroyed.
    bool Gone() const { return gone_; }
    /// Says what has been drawn; called after Mutex() was released.
    virtual void Changed(const QRect& area);

protected:
    std::mutex mutex_;
    QImage image_;      ///< under mutex_
    bool gone_ = false; ///< under mutex_
};

enum class Erase : bool { No, Yes };
enum class OwnContext : bool { No, Yes };

/// What is invalid and waits for WM_PAINT.
struct PendingPaint {
    QRect area; ///< client coordinates, within the client area; empty: nothing
    Erase erase = Erase::No;
};

class Surface final : public PixelBuffer, public std::enable_shared_from_this<Surface> {
public:
    /// @param own_context  of a class with CS_OWNDC: GetDC always gives the same device context
    Surface(HWND window, QSize size, OwnContext own_context);
    ~Surface() override;

    HWND Window() const { return window_; }
    bool HasOwnContext() const { return own_context_ == OwnContext::Yes; }

    /// The widget to update when something was drawn; UI thread only.
    void Attach(QWidget* widget);
    /// In place of that: who is told what was drawn; UI thread only.
    void OnDelivery(std::function<void(const QRect&)> listener);
    /// Keeps what fits, new pixels are white; the invalid rectangle is cut. UI thread only.
    void Resize(QSize size);
    /// The window goes: from now on drawing fails. UI thread only.
    void Close();
    QSize Size();

    /// Copies the area (client coordinates) to the screen, from the widget's paint event.
    void CopyTo(QPainter& painter, const QRect& area);
    /// A copy of all pixels, for tests and screen shots.
    QImage Snapshot();

    /// Adds to what is invalid; any thread.
    /// @param area  null: the whole client area
    void Invalidate(const RECT* area, Erase erase);
    /// Takes away what lies in the area (whole: everything); any thread.
    void Validate(const RECT* area);
    bool NeedsPaint();
    PendingPaint Pending();
    /// Gives what is invalid and makes it valid.
    PendingPaint TakePending();

    /// Any thread; wakes the UI thread if this is the first change since it last looked.
    void Changed(const QRect& area) override;
    /// Hands the changes to the widget; called on the UI thread by the wake.
    void DeliverChanges();

private:
    const HWND window_;
    const OwnContext own_context_;
    QPointer<QWidget> widget_;                   ///< UI thread only
    std::function<void(const QRect&)> listener_; ///< UI thread only
    PendingPaint pending_;                       ///< under mutex_
    std::mutex changed_mutex_;
    QRect changed_; ///< under changed_mutex_
};

/// Makes the surface the one of its window, for the drawing calls of every thread.
void RegisterSurface(const std::shared_ptr<Surface>& surface);
/// Closes the window's surface, forgets it and frees its device contexts.
void UnregisterSurface(HWND window);
/// @return null for a window that has none.
std::shared_ptr<Surface> SurfaceOf(HWND window);

/// Surfaces that are alive, closed ones that somebody still holds included.
int CountSurfaces();

/// Objects that are alive, stock objects left out: a test compares before and after.
struct DrawingObjectCounts {
    int device_contexts = 0;
    int bitmaps = 0;
    int brushes = 0;
    int pens = 0;
    int fonts = 0;
    bool operator==(const DrawingObjectCounts&) const = default;
};
DrawingObjectCounts CountDrawingObjects();

} // namespace kelvo::desktop
