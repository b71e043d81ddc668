#pragma once
// A surface under the handle of a window that is none: drawing tests read its pixels back.

#include "platform/desktop/Surface.h"
#include "platform/desktop/drawing.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace kelvo::desktop {

class SurfaceWindow {
public:
    explicit SurfaceWindow(QSize size, OwnContext own_context = OwnContext::No)
        : surface_(std::make_shared<kelvo::desktop::Surface>(NextHandle(), size, own_context)) {
        RegisterSurface(surface_);
    }
    ~SurfaceWindow() { UnregisterSurface(Handle()); }
    SurfaceWindow(const SurfaceWindow&) = delete;
    SurfaceWindow& operator=(const SurfaceWindow&) = delete;

    HWND Handle() const { return surface_->Window(); }
    kelvo::desktop::Surface& Surface() { return *surface_; }

    /// 0xRRGGBB, row by row from the top.
    std::vector<std::uint32_t> Pixels() {
        const QImage image = surface_->Snapshot();
        std::vector<std::uint32_t> pixels;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                pixels.push_back(image.pixel(x, y) & 0xFFFFFFU);
        }
        return pixels;
    }
    std::uint32_t Pixel(int x, int y) { return surface_->Snapshot().pixel(x, y) & 0xFFFFFFU; }

private:
    static HWND NextHandle() {
        static std::uintptr_t next = 0x7001;
        return reinterpret_cast<HWND>(next++);
    }

    std::shared_ptr<kelvo::desktop::Surface> surface_;
};

} // namespace kelvo::desktop
