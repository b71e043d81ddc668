#include "tests/framework/window/WindowFixture.h"

#include "framework/window/CDc.h"
#include "platform/desktop/Surface.h"

namespace kelvo {
namespace {

constexpr COLORREF kRed = 0x0000FF;
constexpr COLORREF kGrey = 0x808080;
constexpr COLORREF kPaper = 0x123456;

/// A bitmap of one colour.
HBITMAP MakeBitmap(const CDc& like, LONG width, LONG height, COLORREF colour) {
    CDc memory;
    memory.Attach(CreateCompatibleDC(like.Context()));
    const HBITMAP bitmap = CreateCompatibleBitmap(like.Context(), width, height);
    const HGDIOBJ former = SelectObject(memory.Context(), bitmap);
    const RECT all{0, 0, width, height};
    const HBRUSH brush = CreateSolidBrush(colour);
    FillRect(memory.Context(), &all, brush);
    DeleteObject(brush);
    SelectObject(memory.Context(), former);
    DeleteDC(memory.Context());
    return bitmap;
}

/// Draws on a window of 220 x 220 pixels of one colour.
class Drawing : public testing::Test {
protected:
    void SetUp() override {
        window_.SetStyle(WS_POPUP | WS_VISIBLE);
        window_.SetPlacement(0, 0, 220, 220);
        window_.SetBackgroundColour(kPaper);
        window_.SetPaintBackground(true);
        ASSERT_EQ(window_.Create(), 1);
        lum.ProcessMessages();
        before_ = desktop::CountDrawingObjects();
        context_.GetWindowDc(window_);
    }
    void TearDown() override {
        context_.ReleaseWindowDc(window_);
        EXPECT_EQ(desktop::CountDrawingObjects(), before_);
    }
    /// The rectangle of what is not paper any more.
    RECT Drawn() const {
        RECT found{220, 220, 0, 0};
        for (LONG y = 0; y < 220; ++y) {
            for (LONG x = 0; x < 220; ++x) {
                if (GetPixel(context_.Context(), x, y) == kPaper) continue;
                found = {std::min(found.left, x), std::min(found.top, y),
                         std::max(found.right, x + 1), std::max(found.bottom, y + 1)};
            }
        }
        return found;
    }
    void ExpectDrawn(LONG left, LONG top, LONG right, LONG bottom) const {
        const RECT drawn = Drawn();
        EXPECT_EQ(drawn.left, left);
        EXPECT_EQ(drawn.top, top);
        EXPECT_EQ(drawn.right, right);
        EXPECT_EQ(drawn.bottom, bottom);
    }

    CWin window_;
    CDc context_;
    desktop::DrawingObjectCounts before_;
};

struct PlaceCase {
    const char* name;
    LONG width, height; // of the bitmap
    RECT area;
    UINT flags;
    RECT drawn;
};
class PlacedBitmap : public Drawing, public testing::WithParamInterface<PlaceCase> {};

const PlaceCase kPlaceCases[] = {
    {"FitsByWidthAtTheBottom", 100, 50, {0, 0, 200, 200}, 0, {0, 100, 200, 200}},
    {"FitsByWidthInTheMiddle", 100, 50, {0, 0, 200, 200}, kDrawMiddle, {0, 50, 200, 150}},
    {"FitsByWidthAtTheTop", 100, 50, {0, 0, 200, 200}, kDrawTop, {0, 0, 200, 100}},
    {"FitsByHeightAtTheRight", 50, 100, {0, 0, 200, 100}, 0, {150, 0, 200, 100}},
    {"FitsByHeightInTheCentre", 50, 100, {0, 0, 200, 100}, kDrawCentre, {75, 0, 125, 100}},
    {"Stretches", 10, 10, {5, 6, 105, 46}, kDrawStretch, {5, 6, 105, 46}},
};
TEST_P(PlacedBitmap, CoversTheStatedPixels) {
    const PlaceCase& one = GetParam();
    const HBITMAP bitmap = MakeBitmap(context_, one.width, one.height, kRed);
    context_.DrawBitmap(bitmap, one.area, one.flags, 0);
    ExpectDrawn(one.drawn.left, one.drawn.top, one.drawn.right, one.drawn.bottom);
    DeleteObject(bitmap);
}
INSTANTIATE_TEST_SUITE_P(All, PlacedBitmap, testing::ValuesIn(kPlaceCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Drawing, PutsAnUnscaledBitmapInTheMiddle) {
    const HBITMAP bitmap = MakeBitmap(context_, 40, 40, kRed);
    context_.DrawBitmap(bitmap, RECT{10, 20, 110, 80}, kDrawNoScale | kDrawCentre | kDrawMiddle, 0);
    EXPECT_EQ(GetPixel(context_.Context(), 40, 30), kRed);
    EXPECT_EQ(GetPixel(context_.Context(), 39, 30), kPaper);
    EXPECT_EQ(GetPixel(context_.Context(), 79, 69), kRed);
    DeleteObject(bitmap);
}

TEST_F(Drawing, ReplacesTheBackgroundThatTheCornersTell) {
    struct Corners {
        COLORREF top_left, bottom_left, bottom_right, top_right, expected;
    };
    const Corners cases[] = {
        {1, 1, 2, 3, 1}, {1, 2, 2, 3, 2}, {1, 2, 3, 2, 2}, {1, 2, 3, 3, 3}, {1, 2, 3, 4, 1}};
    for (const Corners& one : cases) {
        const HBITMAP bitmap = MakeBitmap(context_, 4, 4, kGrey);
        const HDC memory = CreateCompatibleDC(context_.Context());
        const HGDIOBJ former = SelectObject(memory, bitmap);
        SetPixel(memory, 0, 0, one.top_left);
        SetPixel(memory, 0, 3, one.bottom_left);
        SetPixel(memory, 3, 3, one.bottom_right);
        SetPixel(memory, 3, 0, one.top_right);
        EXPECT_EQ(BackgroundByCorners(memory, 4, 4), one.expected);
        SelectObject(memory, former);
        DeleteDC(memory);
        DeleteObject(bitmap);
    }
    const HBITMAP bitmap = MakeBitmap(context_, 4, 4, kGrey);
    context_.DrawBitmap(bitmap, 0, 0, kRed);
    EXPECT_EQ(GetPixel(context_.Context(), 2, 2), kRed);
    context_.DrawBitmap(bitmap, 10, 10); // the bitmap itself stays changed
    EXPECT_EQ(GetPixel(context_.Context(), 12, 12), kRed);
    DeleteObject(bitmap);
}

TEST_F(Drawing, CopiesFromAnOffScreenBitmap) {
    {
        CDc off_screen;
        ASSERT_TRUE(off_screen.MakeCompatible(context_, 30, 20));
        const RECT all{0, 0, 30, 20};
        const HBRUSH brush = CreateSolidBrush(kRed);
        FillRect(off_screen.Context(), &all, brush);
        DeleteObject(brush);
        EXPECT_TRUE(off_screen.CopyTo(context_, 5, 6, 10, 10));
        ExpectDrawn(5, 6, 15, 16);
        EXPECT_TRUE(off_screen.CopyTo(context_));
        ExpectDrawn(0, 0, 30, 20);
        ASSERT_TRUE(off_screen.MakeCompatible(window_)); // drops the first one
        off_screen.Release();
        ASSERT_TRUE(off_screen.MakeCompatible(window_));
    }
}

TEST_F(Drawing, LeavesTheCurrentPositionAfterTheText) {
    MoveToEx(context_.Context(), 10, 20, nullptr);
    const CString text("Kelvo è qui");
    SIZE extent{};
    GetTextExtentPoint32A(context_.Context(), text.Text(), text.Length(), &extent);
    context_.WriteText(text);
    POINT position{};
    GetCurrentPositionEx(context_.Context(), &position);
    EXPECT_EQ(position.x, 10 + extent.cx);
    EXPECT_EQ(position.y, 20);
    MoveToEx(context_.Context(), 0, 0, nullptr);
}

TEST_F(Drawing, WritesInItsStandardFonts) {
    context_.WriteText(10, 10, CString("Prova"), 5, true, kRed);
    const RECT text = Drawn();
    EXPECT_EQ(text.left, 10);
    EXPECT_EQ(text.top, 10);
    EXPECT_EQ(GetPixel(context_.Context(), 10, 10), kRed); // the text's own background
    const HFONT fixed = CDc::FixedFont(0, kFontUnderline | kFontItalic);
    LOGFONTA description{};
    ASSERT_NE(GetObjectA(fixed, sizeof description, &description), 0);
    EXPECT_EQ(description.lfHeight, 16);
    EXPECT_STREQ(description.lfFaceName, "CourierNew");
    EXPECT_TRUE(description.lfUnderline != 0 && description.lfItalic != 0);
    EXPECT_EQ(description.lfStrikeOut, 0);
    DeleteObject(fixed);
}

TEST_F(Drawing, DrawsLinesWithoutTheirEndPoint) {
    context_.DrawLine(5, 7, 15, 7, 1, kRed);
    ExpectDrawn(5, 7, 15, 8);
}

TEST_F(Drawing, FillsEllipses) {
    context_.DrawEllipse(RECT{20, 20, 60, 40}, kRed);
    EXPECT_EQ(GetPixel(context_.Context(), 40, 30), kRed);
    EXPECT_EQ(GetPixel(context_.Context(), 21, 21), kPaper);
}

} // namespace
} // namespace kelvo
