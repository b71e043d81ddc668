// The way of a film's picture to the screen: 16-bit rows into a window's surface, the surface into
// its widget. The plain loop is the yardstick for the first half.
//
// Counters: images a second. Without a display the second half measures the off-screen window.

#include "platform/desktop/Desktop.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/drawing.h"

#include <QCoreApplication>
#include <QPaintEvent>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace kelvo::desktop {
namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;

std::vector<std::uint16_t> MakePicture() {
    std::vector<std::uint16_t> picture(kWidth * kHeight);
    std::uint32_t noise = 1;
    for (std::uint16_t& pixel : picture) {
        noise = noise * 1664525U + 1013904223U;
        pixel = static_cast<std::uint16_t>(noise >> 17U);
    }
    return picture;
}

BITMAPINFO PictureInfo() {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = kWidth;
    info.bmiHeader.biHeight = kHeight;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 16;
    return info;
}

/// Not before main: the desktop has statics of its own.
bool DesktopIsThere() {
    static const bool started = platform::StartDesktop("paint_bench");
    return started;
}

class BenchWindow {
public:
    BenchWindow(int width, int height)
        : surface_(std::make_shared<kelvo::desktop::Surface>(
              reinterpret_cast<HWND>(std::uintptr_t{0x7001}), QSize(width, height),
              OwnContext::Yes)) {
        RegisterSurface(surface_);
        dc_ = GetDC(surface_->Window());
    }
    ~BenchWindow() { UnregisterSurface(surface_->Window()); }
    BenchWindow(const BenchWindow&) = delete;
    BenchWindow& operator=(const BenchWindow&) = delete;

    HDC Context() const { return dc_; }
    kelvo::desktop::Surface& Surface() { return *surface_; }

private:
    std::shared_ptr<kelvo::desktop::Surface> surface_;
    HDC dc_;
};

void Count(benchmark::State& state) {
    state.counters["images"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void StretchPicture(benchmark::State& state, int mode) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    const std::vector<std::uint16_t> picture = MakePicture();
    const BITMAPINFO info = PictureInfo();
    if (!DesktopIsThere()) return state.SkipWithError("no desktop");
    BenchWindow window(width, height);
    SetStretchBltMode(window.Context(), mode);
    for (auto _ : state) {
        const int rows = StretchDIBits(window.Context(), 0, 0, width, height, 0, 0, kWidth, kHeight,
                                       picture.data(), &info, DIB_RGB_COLORS, SRCCOPY);
        if (rows != kHeight) state.SkipWithError("not drawn");
    }
    Count(state);
}

void StretchDIBitsNearest(benchmark::State& state) {
    StretchPicture(state, COLORONCOLOR);
}
void StretchDIBitsHalftone(benchmark::State& state) {
    StretchPicture(state, HALFTONE);
}

// One pixel at a time, bottom row first, scaled by a division a pixel.
void PlainLoop(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    const std::vector<std::uint16_t> picture = MakePicture();
    QImage image(width, height, QImage::Format_RGB32);
    for (auto _ : state) {
        for (int y = 0; y < height; ++y) {
            const int source_y = kHeight - 1 - (2 * y + 1) * kHeight / (2 * height);
            for (int x = 0; x < width; ++x) {
                const int source_x = (2 * x + 1) * kWidth / (2 * width);
                const std::uint32_t pixel =
                    picture[static_cast<std::size_t>(source_y * kWidth + source_x)];
                std::uint32_t rgb = 0xFF;
                for (const unsigned shift : {10U, 5U, 0U}) {
                    const std::uint32_t value = pixel >> shift & 31U;
                    rgb = rgb << 8U | (value << 3U | value >> 2U);
                }
                reinterpret_cast<std::uint32_t*>(image.scanLine(y))[x] = rgb;
            }
        }
        benchmark::DoNotOptimize(image.bits());
    }
    Count(state);
}

class BenchWidget : public QWidget {
public:
    explicit BenchWidget(Surface& surface) : surface_(surface) {
        setAttribute(Qt::WA_OpaquePaintEvent);
        resize(surface.Size());
        surface.Attach(this);
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        surface_.CopyTo(painter, event->rect());
    }

private:
    Surface& surface_;
};

void SurfaceToWidget(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    if (!DesktopIsThere()) return state.SkipWithError("no desktop");
    BenchWindow window(width, height);
    BenchWidget widget(window.Surface());
    widget.show();
    for (int i = 0; i < 50; ++i)
        QCoreApplication::processEvents();
    for (auto _ : state) {
        window.Surface().Changed(QRect(0, 0, width, height));
        window.Surface().DeliverChanges();
        QCoreApplication::processEvents();
    }
    Count(state);
}

void Sizes(benchmark::internal::Benchmark* bench) {
    bench->Args({640, 480})->Args({1280, 960})->Args({1067, 800})->Args({320, 240});
    bench->Unit(benchmark::kMicrosecond);
}

BENCHMARK(PlainLoop)->Apply(Sizes);
BENCHMARK(StretchDIBitsNearest)->Apply(Sizes);
BENCHMARK(StretchDIBitsHalftone)->Apply(Sizes);
BENCHMARK(SurfaceToWidget)->Apply(Sizes);

} // namespace
} // namespace kelvo::desktop
