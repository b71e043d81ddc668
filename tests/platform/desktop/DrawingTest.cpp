// Device contexts and the objects selected into them, fillings, lines, bitmaps, mapping.

#include "platform/base/resources.h"
#include "tests/platform/desktop/SurfaceWindow.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cstring>

namespace kelvo::desktop {
namespace {

using Pixels = std::vector<std::uint32_t>;
constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);

/// A surface of 8 x 6 white pixels with a device context, and a check that nothing is left over.
class Drawing : public testing::Test {
protected:
    Drawing() : before_(CountDrawingObjects()), window_({8, 6}), dc_(GetDC(window_.Handle())) {}
    ~Drawing() override {
        ReleaseDC(window_.Handle(), dc_);
        EXPECT_EQ(CountDrawingObjects(), before_);
    }

    void Fill(const RECT& rect, COLORREF colour) {
        const HBRUSH brush = CreateSolidBrush(colour);
        EXPECT_NE(FillRect(dc_, &rect, brush), 0);
        EXPECT_TRUE(DeleteObject(brush));
    }
    /// 'X' where a pixel is not white, row by row.
    std::string Picture() {
        std::string picture;
        const Pixels pixels = window_.Pixels();
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            picture += pixels[i] == 0xFFFFFF ? '.' : 'X';
            if (i % 8 == 7) picture += '\n';
        }
        return picture;
    }

    DrawingObjectCounts before_;
    SurfaceWindow window_;
    HDC dc_;
};

TEST_F(Drawing, AFillingEndsBeforeItsRightAndBottom) {
    Fill({1, 1, 4, 3}, kRed);
    Fill({6, 4, 20, 20}, kBlue);
    Fill({4, 0, 2, 6}, kBlue);
    EXPECT_EQ(Picture(), "........\n.XXX....\n.XXX....\n........\n......XX\n......XX\n");
    EXPECT_EQ(window_.Pixel(1, 1), 0xFF0000U);
    EXPECT_EQ(window_.Pixel(7, 5), 0x0000FFU);
    EXPECT_EQ(GetPixel(dc_, 3, 2), kRed);
}

TEST_F(Drawing, SystemColoursServeAsBrushes) {
    const RECT rect{0, 0, 1, 1};
    EXPECT_EQ(FillRect(dc_, &rect, reinterpret_cast<HBRUSH>(INT_PTR{COLOR_BTNFACE + 1})), 1);
    EXPECT_EQ(GetPixel(dc_, 0, 0), GetSysColor(COLOR_BTNFACE));
    EXPECT_NE(GetSysColor(COLOR_BTNFACE), GetSysColor(COLOR_BTNTEXT));
    EXPECT_EQ(GetSysColor(999), 0U);
}

TEST_F(Drawing, ALineLeavesOutItsEndPoint) {
    const HPEN pen = CreatePen(PS_SOLID, 0, kRed);
    const HGDIOBJ former = SelectObject(dc_, pen);
    EXPECT_EQ(former, GetStockObject(BLACK_PEN));
    POINT position{9, 9};
    EXPECT_TRUE(MoveToEx(dc_, 1, 1, &position));
    EXPECT_EQ(position.x, 0);
    EXPECT_TRUE(LineTo(dc_, 5, 1));
    EXPECT_TRUE(LineTo(dc_, 5, 4));
    EXPECT_TRUE(LineTo(dc_, 2, 4));
    EXPECT_TRUE(GetCurrentPositionEx(dc_, &position));
    EXPECT_EQ(position.x, 2);
    EXPECT_EQ(position.y, 4);
    EXPECT_EQ(Picture(), "........\n.XXXXX..\n.....X..\n.....X..\n...XXX..\n........\n");
    EXPECT_FALSE(DeleteObject(pen)) << "while it is selected";
    EXPECT_EQ(SelectObject(dc_, former), pen);
    EXPECT_TRUE(DeleteObject(pen));
    EXPECT_FALSE(DeleteObject(pen)) << "a second time";
}

TEST_F(Drawing, ASlantedLineTouchesEveryColumnOnce) {
    MoveToEx(dc_, -1, 5, nullptr);
    LineTo(dc_, 8, 2);
    const Pixels pixels = window_.Pixels();
    for (std::size_t x = 0; x < 8; ++x) {
        int touched = 0;
        for (std::size_t y = 0; y < 6; ++y)
            touched += pixels[y * 8 + x] == 0 ? 1 : 0;
        EXPECT_EQ(touched, 1) << x;
    }
    EXPECT_EQ(window_.Pixel(0, 5), 0U);
    EXPECT_EQ(window_.Pixel(7, 2), 0U);
}

TEST_F(Drawing, ShapesStayInsideTheirRectangle) {
    const HBRUSH brush = CreateSolidBrush(kBlue);
    const HGDIOBJ former = SelectObject(dc_, brush);
    EXPECT_TRUE(Rectangle(dc_, 0, 0, 4, 3));
    EXPECT_EQ(Picture(), "XXXX....\nXXXX....\nXXXX....\n........\n........\n........\n");
    EXPECT_EQ(window_.Pixel(0, 0), 0U);
    EXPECT_EQ(window_.Pixel(1, 1), 0x0000FFU);
    Fill({0, 0, 8, 6}, RGB(255, 255, 255));
    EXPECT_TRUE(Ellipse(dc_, 1, 1, 8, 6));
    EXPECT_EQ(window_.Pixel(4, 3), 0x0000FFU);
    EXPECT_EQ(window_.Pixel(4, 1), 0U);
    for (int x = 0; x < 8; ++x)
        EXPECT_EQ(window_.Pixel(x, 0), 0xFFFFFFU) << x;
    EXPECT_EQ(window_.Pixel(1, 1), 0xFFFFFFU);
    Fill({0, 0, 8, 6}, RGB(255, 255, 255));
    // From the right to the top, counter-clockwise: a quarter, not filled.
    EXPECT_TRUE(Arc(dc_, 0, 0, 6, 6, 100, 3, 3, -100));
    EXPECT_EQ(window_.Pixel(3, 3), 0xFFFFFFU);
    EXPECT_EQ(window_.Pixel(0, 3), 0xFFFFFFU);
    EXPECT_EQ(window_.Pixel(3, 0), 0U);
    EXPECT_EQ(window_.Pixel(3, 5), 0xFFFFFFU);
    SelectObject(dc_, former);
    EXPECT_TRUE(DeleteObject(brush));
}

TEST_F(Drawing, WrongHandlesFailWithoutHarm) {
    const auto stranger = reinterpret_cast<HDC>(std::uintptr_t{0xDEADBEEF});
    const auto strange_object = reinterpret_cast<HGDIOBJ>(std::uintptr_t{0xDEADBEEF});
    const RECT rect{0, 0, 1, 1};
    for (const HDC dc : {HDC{nullptr}, stranger}) {
        EXPECT_EQ(FillRect(dc, &rect, GetStockObject(BLACK_BRUSH)), 0);
        EXPECT_FALSE(LineTo(dc, 1, 1));
        EXPECT_FALSE(MoveToEx(dc, 1, 1, nullptr));
        EXPECT_FALSE(Ellipse(dc, 0, 0, 1, 1));
        EXPECT_EQ(GetPixel(dc, 0, 0), CLR_INVALID);
        EXPECT_EQ(SetPixel(dc, 0, 0, 0), CLR_INVALID);
        EXPECT_EQ(SetTextColor(dc, 0), CLR_INVALID);
        EXPECT_EQ(SetBkColor(dc, 0), CLR_INVALID);
        EXPECT_EQ(SetTextAlign(dc, 0), GDI_ERROR);
        EXPECT_EQ(SetMapMode(dc, MM_TEXT), 0);
        EXPECT_EQ(SelectObject(dc, GetStockObject(BLACK_PEN)), nullptr);
        EXPECT_EQ(GetDeviceCaps(dc, HORZRES), 0);
        EXPECT_EQ(CreateCompatibleBitmap(dc, 1, 1), nullptr);
        EXPECT_FALSE(BitBlt(dc, 0, 0, 1, 1, dc_, 0, 0, SRCCOPY));
        EXPECT_FALSE(BitBlt(dc_, 0, 0, 1, 1, dc, 0, 0, SRCCOPY));
        EXPECT_FALSE(DeleteDC(dc));
        EXPECT_EQ(ReleaseDC(window_.Handle(), dc), 0);
    }
    EXPECT_EQ(CreateCompatibleDC(stranger), nullptr);
    EXPECT_EQ(SelectObject(dc_, strange_object), nullptr);
    EXPECT_FALSE(DeleteObject(strange_object));
    EXPECT_EQ(FillRect(dc_, &rect, strange_object), 0);
    EXPECT_EQ(FillRect(dc_, &rect, GetStockObject(BLACK_PEN)), 0) << "a pen is no brush";
    EXPECT_EQ(FillRect(dc_, nullptr, GetStockObject(BLACK_BRUSH)), 0);
    EXPECT_EQ(GetDC(reinterpret_cast<HWND>(std::uintptr_t{0xDEADBEEF})), nullptr);
    EXPECT_FALSE(DeleteDC(dc_)) << "a window's is released";
    EXPECT_EQ(GetStockObject(99), nullptr);
    EXPECT_TRUE(DeleteObject(GetStockObject(BLACK_PEN)));
    EXPECT_NE(SelectObject(dc_, GetStockObject(BLACK_PEN)), nullptr) << "stock objects stay";
    EXPECT_EQ(Picture(), "........\n........\n........\n........\n........\n........\n");
}

TEST_F(Drawing, ABitmapGoesIntoOneContextInMemoryAtATime) {
    const HDC first = CreateCompatibleDC(dc_);
    const HDC second = CreateCompatibleDC(dc_);
    const HBITMAP bitmap = CreateCompatibleBitmap(dc_, 3, 2);
    BITMAP description{};
    EXPECT_EQ(GetObjectA(bitmap, sizeof(description), &description), int{sizeof(BITMAP)});
    EXPECT_EQ(GetObjectA(bitmap, 4, &description), 0);
    EXPECT_EQ(description.bmWidth, 3);
    EXPECT_EQ(description.bmHeight, 2);
    EXPECT_EQ(description.bmBitsPixel, 32);

    EXPECT_EQ(GetPixel(first, 0, 0), 0U) << "one black pixel before";
    EXPECT_EQ(GetPixel(first, 1, 0), CLR_INVALID);
    const HGDIOBJ former = SelectObject(first, bitmap);
    EXPECT_NE(former, nullptr);
    EXPECT_EQ(SelectObject(second, bitmap), nullptr);
    EXPECT_EQ(SelectObject(dc_, bitmap), nullptr) << "a window has its own pixels";
    EXPECT_EQ(SetPixel(first, 2, 1, kRed), kRed);
    EXPECT_EQ(SetPixel(first, 3, 1, kRed), CLR_INVALID);
    EXPECT_FALSE(DeleteObject(bitmap));
    EXPECT_EQ(SelectObject(first, former), bitmap);
    EXPECT_NE(SelectObject(second, bitmap), nullptr);
    EXPECT_EQ(GetPixel(second, 2, 1), kRed) << "the bitmap keeps what was drawn";
    EXPECT_TRUE(DeleteDC(second));
    EXPECT_TRUE(DeleteObject(bitmap)) << "a deleted context lets it go";
    EXPECT_TRUE(DeleteDC(first));
}

TEST_F(Drawing, BitBltCopiesClipsAndOverlaps) {
    Fill({0, 0, 8, 1}, kBlue);
    Fill({0, 0, 2, 1}, kRed);
    EXPECT_TRUE(BitBlt(dc_, 1, 0, 4, 1, dc_, 0, 0, SRCCOPY));
    const Pixels row = window_.Pixels();
    EXPECT_EQ(Pixels(row.begin(), row.begin() + 8),
              (Pixels{0xFF0000, 0xFF0000, 0xFF0000, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));

    const HDC memory = CreateCompatibleDC(dc_);
    const HBITMAP bitmap = CreateCompatibleBitmap(dc_, 2, 2);
    const HGDIOBJ former = SelectObject(memory, bitmap);
    SetPixel(memory, 1, 1, kRed);
    EXPECT_TRUE(BitBlt(dc_, 6, 4, 5, 5, memory, 0, 0, SRCCOPY));
    EXPECT_EQ(window_.Pixel(6, 4), 0U);
    EXPECT_EQ(window_.Pixel(7, 5), 0xFF0000U);
    EXPECT_EQ(window_.Pixel(5, 4), 0xFFFFFFU);
    EXPECT_TRUE(StretchBlt(dc_, 0, 2, 4, 4, memory, 0, 0, 2, 2, SRCCOPY));
    EXPECT_EQ(window_.Pixel(1, 3), 0U);
    EXPECT_EQ(window_.Pixel(2, 4), 0xFF0000U);
    EXPECT_EQ(window_.Pixel(4, 4), 0xFFFFFFU);
    EXPECT_FALSE(StretchBlt(dc_, 0, 2, 0, 4, memory, 0, 0, 2, 2, SRCCOPY));
    EXPECT_FALSE(BitBlt(dc_, 0, 0, 1, 1, memory, 0, 0, 0x00550009));
    SelectObject(memory, former);
    EXPECT_TRUE(DeleteObject(bitmap));
    EXPECT_TRUE(DeleteDC(memory));
}

TEST_F(Drawing, MappingScalesAndMovesInAnisotropicModeOnly) {
    SIZE former{};
    EXPECT_TRUE(SetWindowExtEx(dc_, 800, 800, &former));
    Fill({0, 0, 1, 1}, kRed);
    EXPECT_EQ(window_.Pixel(0, 0), 0xFF0000U) << "extents do not count in text mode";
    EXPECT_EQ(SetMapMode(dc_, MM_ANISOTROPIC), MM_TEXT);
    EXPECT_EQ(SetMapMode(dc_, 77), 0);
    EXPECT_FALSE(SetWindowExtEx(dc_, 0, 800, nullptr));
    EXPECT_TRUE(SetWindowExtEx(dc_, 100, 100, &former));
    EXPECT_EQ(former.cx, 1);
    EXPECT_TRUE(SetViewportExtEx(dc_, 200, 200, nullptr));
    EXPECT_TRUE(SetWindowOrgEx(dc_, 10, 20, nullptr));
    POINT origin{};
    EXPECT_TRUE(SetViewportOrgEx(dc_, 1, 1, &origin));
    EXPECT_EQ(origin.x, 0);
    Fill({11, 21, 12, 22}, kBlue);
    EXPECT_EQ(Picture(), "X.......\n........\n........\n...XX...\n...XX...\n........\n");
}

TEST(ScreenContexts, MeasureButDoNotDraw) {
    const DrawingObjectCounts before = CountDrawingObjects();
    EXPECT_EQ(CreateDCA("PRINTER", nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(CreateDCA(nullptr, nullptr, nullptr, nullptr), nullptr);
    const HDC dc = CreateDCA("DISPLAY", nullptr, nullptr, nullptr);
    const QSize screen_size = QGuiApplication::primaryScreen()->size();
    EXPECT_EQ(GetDeviceCaps(dc, HORZRES), screen_size.width());
    EXPECT_EQ(GetDeviceCaps(dc, VERTRES), screen_size.height());
    EXPECT_EQ(GetDeviceCaps(dc, BITSPIXEL), 32);
    EXPECT_EQ(GetDeviceCaps(dc, LOGPIXELSX), 96);
    EXPECT_EQ(GetDeviceCaps(dc, 12345), 0);
    const RECT rect{0, 0, 1, 1};
    EXPECT_EQ(FillRect(dc, &rect, GetStockObject(BLACK_BRUSH)), 0);
    const HDC memory = CreateCompatibleDC(dc);
    EXPECT_NE(memory, nullptr);
    EXPECT_TRUE(DeleteDC(memory));
    EXPECT_TRUE(DeleteDC(dc));
    const HDC screen = GetDC(nullptr);
    EXPECT_EQ(ReleaseDC(nullptr, screen), 1);
    EXPECT_EQ(ReleaseDC(nullptr, screen), 0);
    EXPECT_EQ(CountDrawingObjects(), before);
}

/// The compiled form of one bitmap resource named 1, in a module of its own.
HMODULE ModuleWithBitmap(const std::vector<std::uint8_t>& packed) {
    static std::vector<std::unique_ptr<std::vector<std::uint64_t>>> kept; // for ever, as it must
    const std::vector<std::uint32_t> words{
        0x4352564B, 1, 1, 0, 2, 1, 0, 40, static_cast<std::uint32_t>(packed.size()), 0};
    auto block = std::make_unique<std::vector<std::uint64_t>>((40 + packed.size() + 7) / 8);
    auto* bytes = reinterpret_cast<std::uint8_t*>(block->data());
    std::memcpy(bytes, words.data(), 40);
    std::ranges::copy(packed, bytes + 40);
    kept.push_back(std::move(block));
    const HMODULE module = platform::AddModule();
    EXPECT_TRUE(platform::RegisterResources(module, {bytes, 40 + packed.size()}));
    return module;
}

TEST(LoadBitmap, ReadsAPackedBitmapAndRefusesACutOne) {
    const DrawingObjectCounts before = CountDrawingObjects();
    const std::vector<std::uint8_t> packed{
        40, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0, 0, 0, 0, 0, 0,  0,  0,  0, 0,
        0,  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3,  4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0};
    const HBITMAP bitmap = LoadBitmapA(ModuleWithBitmap(packed), MAKEINTRESOURCEA(1));
    ASSERT_NE(bitmap, nullptr);
    const HDC memory = CreateCompatibleDC(nullptr);
    const HGDIOBJ former = SelectObject(memory, bitmap);
    EXPECT_EQ(GetPixel(memory, 0, 0), RGB(9, 8, 7));
    EXPECT_EQ(GetPixel(memory, 1, 1), RGB(6, 5, 4));
    SelectObject(memory, former);
    EXPECT_TRUE(DeleteDC(memory));
    EXPECT_TRUE(DeleteObject(bitmap));
    for (std::size_t length = 0; length < packed.size(); ++length) {
        const std::vector<std::uint8_t> cut(packed.begin(),
                                            packed.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(LoadBitmapA(ModuleWithBitmap(cut), MAKEINTRESOURCEA(1)), nullptr) << length;
    }
    EXPECT_EQ(LoadBitmapA(ModuleWithBitmap(packed), "missing"), nullptr);
    EXPECT_EQ(CountDrawingObjects(), before);
}

} // namespace
} // namespace kelvo::desktop
