// Between BeginPaint and EndPaint, and what the screen is like.

#include "platform/desktop/DeviceContext.h"
#include "platform/desktop/messages.h"

#include <QGuiApplication>
#include <QScreen>
#include <QThread>

#include <atomic>

using namespace kelvo::desktop;

namespace {

struct ScreenSize {
    std::atomic<int> width{800};
    std::atomic<int> height{800};
};

// Other threads see what the UI thread saw last: it alone may ask the desktop.
const ScreenSize& CurrentScreenSize() {
    static ScreenSize size;
    const QCoreApplication* application = QCoreApplication::instance();
    const bool may_ask = qobject_cast<const QGuiApplication*>(application) != nullptr &&
                         application->thread() == QThread::currentThread();
    const QScreen* screen = may_ask ? QGuiApplication::primaryScreen() : nullptr;
    if (screen != nullptr) {
        size.width = screen->geometry().width();
        size.height = screen->geometry().height();
    }
    return size;
}

} // namespace

HDC BeginPaint(HWND window, PAINTSTRUCT* paint) {
    const auto surface = SurfaceOf(window);
    if (!surface || paint == nullptr) return nullptr;
    const PendingPaint pending = surface->TakePending();
    // Always one of its own: the rectangle that clips the painting must not clip what another
    // thread draws meanwhile through the window's kept one.
    const HDC dc = AddPaintingContext(window, pending.area);
    *paint = {};
    paint->hdc = dc;
    if (dc == nullptr) return nullptr;
    if (!pending.area.isEmpty()) {
        paint->rcPaint = {pending.area.left(), pending.area.top(), pending.area.right() + 1,
                          pending.area.bottom() + 1};
    }
    if (pending.erase == Erase::Yes) {
        const LRESULT erased = SendMessageA(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0);
        paint->fErase = erased == 0 ? TRUE : FALSE;
    }
    return dc;
}

BOOL EndPaint(HWND /*window*/, const PAINTSTRUCT* paint) {
    return paint != nullptr && FreePaintingContext(paint->hdc) ? TRUE : FALSE;
}

int GetDeviceCaps(HDC dc, int index) {
    if (!FindContext(dc)) return 0;
    switch (index) {
    case HORZRES:
        return CurrentScreenSize().width;
    case VERTRES:
        return CurrentScreenSize().height;
    case BITSPIXEL:
        return 32;
    case PLANES:
        return 1;
    case LOGPIXELSX:
    case LOGPIXELSY:
        return 96;
    default:
        return 0;
    }
}
