#include "tests/framework/window/WindowFixture.h"

#include "framework/window/CProgressBar.h"

#include <atomic>
#include <thread>

namespace kelvo {
namespace {

constexpr COLORREF kWhite = 0xFFFFFF;
constexpr COLORREF kBlue = 0xFF0000;
constexpr COLORREF kGreen = 0x00FF00;

class PositionBar : public testing::Test {
protected:
    void SetUp() override {
        owner_.SetStyle(WS_POPUP | WS_VISIBLE);
        owner_.SetPlacement(0, 0, 200, 200);
        ASSERT_EQ(owner_.Create(), 1);
        bar_.SetParent(&owner_);
        bar_.SetStyle(WS_CHILD | WS_VISIBLE);
    }
    void CreateBar(LONG width, LONG height) {
        bar_.SetPlacement(0, 0, width, height);
        ASSERT_EQ(bar_.Create(), 1);
        lum.ProcessMessages();
    }

    NotingWindow owner_;
    CProgressBar bar_;
};

TEST_F(PositionBar, FillsUpToItsValueWithoutAMessage) {
    CreateBar(100, 10);
    bar_.Update({.value = 50, .total = 100});
    EXPECT_EQ(PixelOf(bar_, 0, 0), kBlue);
    EXPECT_EQ(PixelOf(bar_, 50, 9), kBlue);
    EXPECT_EQ(PixelOf(bar_, 51, 0), kWhite);
    bar_.Update({.value = 0, .total = 100});
    EXPECT_EQ(PixelOf(bar_, 0, 0), kWhite);
    bar_.Update({.value = 50, .total = 0}); // draws nothing at all
    EXPECT_EQ(PixelOf(bar_, 0, 0), kWhite);
    // No product of the two may wrap.
    bar_.Update({.value = 2'000'000'000, .total = 2'000'000'000});
    EXPECT_EQ(PixelOf(bar_, 99, 0), kBlue);
}

TEST_F(PositionBar, ShowsItsMarkerInsideItsEdges) {
    CreateBar(100, 10);
    bar_.Update({.value = 80, .total = 100, .marker_start = 20, .marker_end = 40});
    EXPECT_EQ(PixelOf(bar_, 19, 5), kBlue);
    EXPECT_EQ(PixelOf(bar_, 20, 5), kGreen);
    EXPECT_EQ(PixelOf(bar_, 40, 5), kGreen);
    EXPECT_EQ(PixelOf(bar_, 41, 5), kBlue);
    EXPECT_EQ(PixelOf(bar_, 30, 0), kBlue);
    EXPECT_EQ(PixelOf(bar_, 30, 9), kBlue);
}

TEST_F(PositionBar, GrowsUpwardWhenVertical) {
    CreateBar(10, 100);
    bar_.SetHorizontal(false);
    bar_.Update({.value = 25, .total = 100});
    EXPECT_EQ(PixelOf(bar_, 5, 99), kBlue);
    EXPECT_EQ(PixelOf(bar_, 5, 75), kBlue);
    EXPECT_EQ(PixelOf(bar_, 5, 74), kWhite);
}

TEST_F(PositionBar, TellsItsOwnerWhereItWasClicked) {
    CreateBar(100, 10);
    bar_.Update({.value = 0, .total = 1000});
    bar_.Send(WM_LBUTTONDOWN, 0, MAKELPARAM(25, 5));
    ASSERT_EQ(owner_.notifications.size(), 1U);
    EXPECT_EQ(owner_.notifications[0].message, 0x130FU);
    EXPECT_EQ(owner_.notifications[0].wparam, 250U);
    EXPECT_EQ(owner_.notifications[0].lparam, 0);
}

TEST_F(PositionBar, IsPaintedAgainWithItsNewestValuesAndColours) {
    CreateBar(100, 10);
    bar_.Update({.value = 50, .total = 100});
    bar_.SetColours(RGB(1, 1, 1), RGB(2, 2, 2), RGB(3, 3, 3));
    InvalidateRect(bar_.Window(), nullptr, TRUE);
    lum.ProcessMessages();
    EXPECT_EQ(PixelOf(bar_, 0, 0), RGB(2, 2, 2));
    EXPECT_EQ(PixelOf(bar_, 60, 0), RGB(1, 1, 1));
}

TEST_F(PositionBar, AsksOnAClickOnItsOwnerWhetherToStop) {
    CreateBar(100, 10);
    platform::MessageBoxRecorder boxes;
    const auto click_owner = [this] { owner_.Post(WM_LBUTTONDOWN, MK_LBUTTON, 0x00640064); };
    EXPECT_EQ(bar_.UpdateWithAbort({.value = 10, .total = 100}), 1);
    click_owner();
    boxes.AnswerNext({IDNO});
    EXPECT_EQ(bar_.UpdateWithAbort({.value = 20, .total = 100}), 1);
    EXPECT_EQ(bar_.Values().value, 20);
    EXPECT_EQ(PixelOf(bar_, 20, 5), kBlue);
    click_owner();
    boxes.AnswerNext({IDYES});
    EXPECT_EQ(bar_.UpdateWithAbort({.value = 30, .total = 100}), 0);
    EXPECT_EQ(bar_.Values().value, 20);
    ASSERT_EQ(boxes.Boxes().size(), 2U);
    EXPECT_EQ(boxes.Boxes()[0].text, "Si desidera interrompere il processo in corso ?");
    EXPECT_EQ(boxes.Boxes()[0].caption, "PROCESSO IN CORSO");
    EXPECT_EQ(boxes.Boxes()[0].type, static_cast<UINT>(MB_YESNO | MB_ICONQUESTION));
}

TEST_F(PositionBar, AnswersOnlyWhatConcernsNotItsOwner) {
    CreateBar(100, 10);
    NotingWindow other;
    other.SetStyle(WS_POPUP | WS_VISIBLE);
    other.SetPlacement(300, 0, 50, 50);
    ASSERT_EQ(other.Create(), 1);
    lum.ProcessMessages();
    owner_.noted.clear();
    owner_.Post(WM_LBUTTONUP, 0, 0);
    owner_.Post(WM_COMMAND, 7, 0);
    InvalidateRect(owner_.Window(), nullptr, TRUE);
    other.Post(WM_COMMAND, 8, 0);
    PostMessageA(bar_.Window(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(25, 5));
    EXPECT_EQ(bar_.UpdateWithAbort({.value = 1, .total = 100}), 1);
    EXPECT_EQ(owner_.Count(WM_LBUTTONUP), 0);
    EXPECT_EQ(owner_.Count(WM_COMMAND), 0);
    EXPECT_EQ(owner_.Count(WM_PAINT), 1);
    EXPECT_EQ(other.Count(WM_COMMAND), 1);
    EXPECT_EQ(owner_.notifications.size(), 1U); // the click on the bar
}

TEST_F(PositionBar, TakesUpdatesOfAnotherThreadWhileItIsResizedAndDestroyed) {
    CreateBar(100, 10);
    std::atomic<bool> stop = false;
    std::atomic<int> updates = 0;
    std::thread player([&] {
        for (int value = 0; !stop; value = (value + 1) % 100) {
            bar_.Update({.value = value, .total = 100});
            ++updates;
        }
    });
    while (updates < 50) {
        lum.ProcessMessages();
    }
    for (LONG width = 20; width < 120; width += 3) {
        bar_.SetSize(width, 12);
        lum.ProcessMessages();
    }
    DestroyWindow(bar_.Window());
    const int at_destruction = updates;
    while (updates < at_destruction + 50) {
        std::this_thread::yield();
    }
    stop = true;
    player.join();
    EXPECT_EQ(bar_.Values().total, 100);
}

} // namespace
} // namespace kelvo
