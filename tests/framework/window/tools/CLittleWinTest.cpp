// Hints: where they appear, how they look, and what failed before they could.

#include "tests/framework/window/tools/ToolWindowFixture.h"

namespace kelvo {
namespace {

constexpr COLORREF kYellow = 0xE1FFFF;

RECT PlaceOf(const CWin& window) {
    RECT place{};
    GetWindowRect(window.Window(), &place);
    return place;
}

RECT Screen() {
    RECT screen{};
    GetWindowRect(GetDesktopWindow(), &screen);
    return screen;
}

TEST(Hint, SaysWhyItCouldNotBeMade) {
    ASSERT_EQ(Early().hint_class.size(), 1U);
    EXPECT_EQ(Early().hint_class[0].text, "IMPOSSIBILE REGISTRARE CLASSE");
    EXPECT_EQ(Early().hint_class[0].caption, "CLittleWin::CLittleWin()");
    ASSERT_EQ(Early().hint_before_kernel.size(), 1U);
    EXPECT_EQ(Early().hint_before_kernel[0].text,
              "CHIAMARE lum.StartDefaultKernel() prima di creare oggetti CWin!");
}

struct HintPlace {
    const char* name;
    LONG from_right; ///< of the screen, to the point
    LONG from_bottom;
    LONG left; ///< of the hint, from the point
    LONG top;
};
// 100 by 16, 10 away; to the right edge 10 more must fit.
constexpr HintPlace kPlaces[] = {
    {"RightAndBelow", 400, 300, 10, 10},       {"JustFits", 110, 16, 10, 10},
    {"PassesTheRightEdge", 50, 300, -110, 10}, {"ByOnePixel", 109, 300, -110, 10},
    {"PassesTheBottom", 400, 15, 10, -26},     {"InTheCorner", 0, 0, -110, -26},
};

class HintPlaces : public testing::TestWithParam<HintPlace> {};

TEST_P(HintPlaces, KeepTheHintOnTheScreen) {
    CLittleWin hint;
    const LONG x = Screen().right - GetParam().from_right;
    const LONG y = Screen().bottom - GetParam().from_bottom;
    hint.Show(x, y);
    EXPECT_TRUE(hint.IsShown());
    EXPECT_NE(IsWindowVisible(hint.Window()), FALSE);
    const RECT place = PlaceOf(hint);
    EXPECT_EQ(place.left - x, GetParam().left);
    EXPECT_EQ(place.top - y, GetParam().top);
    EXPECT_EQ(place.right - place.left, 100);
    EXPECT_EQ(place.bottom - place.top, 16);
    hint.Hide();
    EXPECT_FALSE(hint.IsShown());
    EXPECT_EQ(IsWindowVisible(hint.Window()), FALSE);
}
INSTANTIATE_TEST_SUITE_P(Near, HintPlaces, testing::ValuesIn(kPlaces),
                         [](const auto& row) { return row.param.name; });

TEST(Hint, WritesDarkOnYellowAndRedrawsAtOnceWhileShown) {
    CLittleWin hint;
    hint.SetDistance(0, 0);
    hint.Show(100, 100);
    lum.ProcessMessages();
    const auto inked = [&hint] {
        RECT client{};
        GetClientRect(hint.Window(), &client);
        int pixels = 0;
        for (LONG y = 0; y < client.bottom; ++y) {
            for (LONG x = 0; x < client.right; ++x) {
                if (PixelOf(hint, x, y) != kYellow) ++pixels;
            }
        }
        return pixels;
    };
    EXPECT_EQ(inked(), 0); // two spaces
    EXPECT_EQ(PixelOf(hint, 0, 0), kYellow);
    hint.SetHintText("00:10");
    hint.Show(120, 100); // without a turn of the loop
    EXPECT_GT(inked(), 20);
    EXPECT_EQ(PlaceOf(hint).left, 120);
}

TEST(Hint, GrowsWithATextThatIsWiderThanItsBox) {
    CLittleWin hint;
    hint.SetHintText("Una spiegazione molto piu' lunga di quanto la casella possa mostrare");
    hint.Show(10, 10);
    const RECT place = PlaceOf(hint);
    EXPECT_GT(place.right - place.left, 200);
    hint.SetHintText("corta");
    EXPECT_EQ(PlaceOf(hint).right - PlaceOf(hint).left, 100);
}

TEST(Hint, NeverTakesTheKeyboardAndLiesAboveOthers) {
    CWin window;
    window.SetPlacement(0, 0, 300, 200);
    ASSERT_EQ(window.Create(), 1);
    SetFocus(window.Window());
    CLittleWin hint;
    hint.Show(50, 50);
    lum.ProcessMessages();
    EXPECT_EQ(GetFocus(), window.Window());
    EXPECT_NE(GetWindowLongPtrA(hint.Window(), GWL_EXSTYLE) & WS_EX_TOPMOST, 0);
    EXPECT_EQ(GetParent(hint.Window()), nullptr);
}

TEST(Hint, IsMadeAnewWhenItsWindowIsGone) {
    CLittleWin hint;
    hint.Show(50, 50);
    DestroyWindow(hint.Window());
    EXPECT_FALSE(hint.IsShown());
    hint.Show(60, 60);
    EXPECT_TRUE(hint.IsShown());
    EXPECT_EQ(PlaceOf(hint).left, 70);
}

} // namespace
} // namespace kelvo
