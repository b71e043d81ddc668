// Surfaces: what is invalid, what changed, resizing and closing while other threads draw.

#include "platform/desktop/Window.h"
#include "tests/platform/desktop/SurfaceWindow.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QPaintEvent>

#include <algorithm>
#include <atomic>
#include <thread>

namespace kelvo::desktop {
namespace {

using Pixels = std::vector<std::uint32_t>;

/// A picture of 16-bit pixels, all of one colour.
class PlainPicture {
public:
    PlainPicture(int width, int height, std::uint16_t pixel)
        : pixels_(static_cast<std::size_t>(width * height), pixel) {
        info_.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info_.bmiHeader.biWidth = width;
        info_.bmiHeader.biHeight = height;
        info_.bmiHeader.biPlanes = 1;
        info_.bmiHeader.biBitCount = 16;
    }
    int Draw(HDC dc, int width, int height) const {
        return StretchDIBits(dc, 0, 0, width, height, 0, 0, info_.bmiHeader.biWidth,
                             info_.bmiHeader.biHeight, pixels_.data(), &info_, DIB_RGB_COLORS,
                             SRCCOPY);
    }

private:
    BITMAPINFO info_{};
    std::vector<std::uint16_t> pixels_;
};

TEST(SurfacePainting, InvalidRectanglesJoinAndAreTakenOnce) {
    SurfaceWindow window({100, 50});
    Surface& surface = window.Surface();
    EXPECT_FALSE(surface.NeedsPaint());
    const RECT first{10, 10, 20, 20};
    const RECT second{30, 5, 200, 15};
    const RECT outside{200, 200, 300, 300};
    surface.Invalidate(&outside, Erase::Yes);
    EXPECT_FALSE(surface.NeedsPaint());
    surface.Invalidate(&first, Erase::No);
    surface.Invalidate(&second, Erase::Yes);
    surface.Invalidate(&first, Erase::No);
    EXPECT_EQ(surface.Pending().area, QRect(10, 5, 90, 15));
    EXPECT_EQ(surface.Pending().erase, Erase::Yes) << "asked for once is asked for";
    const RECT right{30, 0, 100, 50};
    surface.Validate(&right);
    EXPECT_EQ(surface.TakePending().area, QRect(10, 5, 20, 15));
    EXPECT_FALSE(surface.NeedsPaint());
    surface.Invalidate(nullptr, Erase::No);
    EXPECT_EQ(surface.Pending().area, QRect(0, 0, 100, 50));
    surface.Resize({40, 20});
    EXPECT_EQ(surface.Pending().area, QRect(0, 0, 40, 20));
    surface.Validate(nullptr);
    EXPECT_FALSE(surface.NeedsPaint());
}

TEST(SurfacePixels, KeepWhatFitsWhenTheSizeChanges) {
    SurfaceWindow window({2, 2});
    const HDC dc = GetDC(window.Handle());
    const RECT all{0, 0, 2, 2};
    FillRect(dc, &all, GetStockObject(BLACK_BRUSH));
    window.Surface().Resize({3, 1});
    EXPECT_EQ(window.Pixels(), (Pixels{0, 0, 0xFFFFFF}));
    window.Surface().Resize({0, 5});
    EXPECT_EQ(PlainPicture(4, 4, 0).Draw(dc, 4, 4), 4) << "nothing to see is no failure";
    window.Surface().Resize({1, 1});
    EXPECT_EQ(PlainPicture(4, 4, 0x7C00).Draw(dc, 4, 4), 4) << "the context names the window";
    EXPECT_EQ(window.Pixels(), Pixels{0xFF0000});
    ReleaseDC(window.Handle(), dc);
}

TEST(OwnDeviceContext, IsAlwaysTheSameAndGoesWithItsWindow) {
    const DrawingObjectCounts before = CountDrawingObjects();
    HDC kept = nullptr;
    HWND handle = nullptr;
    {
        SurfaceWindow window({4, 4}, OwnContext::Yes);
        handle = window.Handle();
        kept = GetDC(handle);
        SetTextColor(kept, RGB(1, 2, 3));
        EXPECT_EQ(ReleaseDC(handle, kept), 1);
        EXPECT_EQ(GetDC(handle), kept);
        EXPECT_EQ(SetTextColor(kept, 0), RGB(1, 2, 3)) << "it keeps what was set";
        EXPECT_EQ(PlainPicture(4, 4, 0).Draw(kept, 4, 4), 4);

        SurfaceWindow other({4, 4});
        const HDC first = GetDC(other.Handle());
        const HDC second = GetDC(other.Handle());
        EXPECT_NE(first, second);
        EXPECT_EQ(ReleaseDC(handle, first), 0) << "of another window";
    }
    EXPECT_EQ(PlainPicture(4, 4, 0).Draw(kept, 4, 4), 0);
    EXPECT_EQ(GetDC(handle), nullptr);
    EXPECT_EQ(CountDrawingObjects(), before) << "unreleased ones, too";
}

TEST(BeginPaint, ClipsToWhatWasInvalidAndValidatesIt) {
    const DrawingObjectCounts before = CountDrawingObjects();
    SurfaceWindow window({4, 2});
    const RECT middle{1, 0, 3, 1};
    window.Surface().Invalidate(&middle, Erase::No);
    PAINTSTRUCT paint{};
    const HDC dc = BeginPaint(window.Handle(), &paint);
    EXPECT_EQ(dc, paint.hdc);
    EXPECT_EQ(paint.rcPaint.left, 1);
    EXPECT_EQ(paint.rcPaint.right, 3);
    EXPECT_EQ(paint.rcPaint.bottom, 1);
    EXPECT_FALSE(paint.fErase);
    EXPECT_FALSE(window.Surface().NeedsPaint());
    const RECT all{0, 0, 4, 2};
    FillRect(dc, &all, GetStockObject(BLACK_BRUSH));
    EXPECT_EQ(ReleaseDC(window.Handle(), dc), 0) << "EndPaint ends it";
    EXPECT_TRUE(EndPaint(window.Handle(), &paint));
    EXPECT_FALSE(EndPaint(window.Handle(), &paint));
    constexpr std::uint32_t kWhite = 0xFFFFFF;
    EXPECT_EQ(window.Pixels(), (Pixels{kWhite, 0, 0, kWhite, kWhite, kWhite, kWhite, kWhite}));
    EXPECT_EQ(BeginPaint(nullptr, &paint), nullptr);
    EXPECT_EQ(BeginPaint(window.Handle(), nullptr), nullptr);
    EXPECT_EQ(CountDrawingObjects(), before);
}

/// Shows a surface as a window's widget does.
class SurfaceWidget : public QWidget {
public:
    explicit SurfaceWidget(Surface& surface) : surface_(surface) {
        setAttribute(Qt::WA_OpaquePaintEvent);
        resize(surface.Size());
        surface.Attach(this);
    }
    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override {
        ++paints;
        QPainter painter(this);
        surface_.CopyTo(painter, event->rect());
    }

private:
    Surface& surface_;
};

TEST(SurfaceChanges, ReachTheWidgetTogether) {
    SurfaceWindow window({64, 64});
    SurfaceWidget widget(window.Surface());
    widget.show();
    QCoreApplication::processEvents();
    const int before = widget.paints;
    std::thread([&] {
        const HDC dc = GetDC(window.Handle());
        for (int i = 0; i < 100; ++i)
            PlainPicture(4, 4, 0x7C00).Draw(dc, 64, 64);
        ReleaseDC(window.Handle(), dc);
    }).join();
    window.Surface().DeliverChanges();
    QCoreApplication::processEvents();
    EXPECT_EQ(widget.paints, before + 1);
    EXPECT_EQ(widget.grab().toImage().pixel(63, 63), 0xFFFF0000U);
}

TEST(SurfaceThreads, NeverShowHalfAPicture) {
    SurfaceWindow window({64, 64}, OwnContext::Yes);
    const HDC kept = GetDC(window.Handle());
    PlainPicture(64, 64, 0).Draw(kept, 64, 64);
    std::atomic<bool> stop = false;
    const auto draw = [&](std::uint16_t pixel) {
        const PlainPicture picture(32, 32, pixel);
        while (!stop)
            EXPECT_EQ(picture.Draw(kept, 64, 64), 32);
    };
    std::thread red(draw, std::uint16_t{0x7C00});
    std::thread blue(draw, std::uint16_t{0x001F});
    for (int i = 0; i < 200; ++i) {
        const Pixels pixels = window.Pixels();
        EXPECT_TRUE(std::ranges::all_of(pixels, [&](auto pixel) { return pixel == pixels[0]; }));
    }
    stop = true;
    red.join();
    blue.join();
}

TEST(SurfaceThreads, DrawWhileTheSizeChangesAndUntilTheWindowGoes) {
    auto window = std::make_unique<SurfaceWindow>(QSize(10, 10), OwnContext::Yes);
    const HDC kept = GetDC(window->Handle());
    std::atomic<int> drawn = 0;
    std::thread drawing([&] {
        const PlainPicture picture(64, 64, 0x03E0);
        while (picture.Draw(kept, 64, 64) != 0)
            ++drawn; // ends when the window has gone
    });
    for (int i = 0; i < 300 || drawn < 10; ++i) {
        window->Surface().Resize({i % 97, i % 89});
        window->Surface().Invalidate(nullptr, Erase::No);
        for (const std::uint32_t pixel : window->Pixels()) {
            ASSERT_TRUE(pixel == 0x00FF00 || pixel == 0xFFFFFF);
        }
        std::this_thread::yield();
    }
    window.reset();
    drawing.join();
    EXPECT_GE(drawn, 10);
}

} // namespace
} // namespace kelvo::desktop
