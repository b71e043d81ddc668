// The player operated by mouse and keyboard: its menu, its position bar.

#include "tests/e2e/StageForTests.h"

namespace kelvo::test {
namespace {

constexpr int kFilePopup = 0;
constexpr int kOptionsPopup = 1;
// Entries as the arrow keys count them, which do not stop at separators.
constexpr int kChiudi = 1;
enum Entry : int {
    kNaturalSize = 0,
    kFitToWindow = 1,
    kQuarter = 2,
    kHalf = 3,
    kThreeQuarters = 4,
    kOneAndAHalf = 5,
    kTwice = 6,
    kTopmost = 7,
    kContinuous = 8,
};

class Menu : public OnStage {
protected:
    void Start(const CodedFilmPlan& plan = {.seconds = 12}) {
        player_ = std::make_unique<Player>(TheStage(), std::vector{Film("film.kva", plan)});
        ASSERT_TRUE(player_->WaitForTitle("Kelvo - film"));
        ASSERT_TRUE(WaitForAnyImage(*player_));
        picture_ = *player_->WaitForPicture(kCodedWidth, kCodedHeight);
    }
    void TearDown() override {
        player_.reset();
        OnStage::TearDown();
    }
    std::optional<int> Image() const {
        return ReadBarCode(TheStage().Screen(), picture_.x, picture_.y);
    }
    bool WaitForImages(int first, int last) const {
        return WaitUntil([&] {
            const auto image = Image();
            return image && *image >= first && *image <= last;
        });
    }

    std::unique_ptr<Player> player_;
    Area picture_;
};

TEST_F(Menu, EndsWithEsciClickedByTheMouse) {
    Start();
    ASSERT_TRUE(player_->ClickLowestFileEntry());
    EXPECT_EQ(player_->WaitForExit(), ExitStatus{.code = 0});
    EXPECT_EQ(player_->Process().Errors(), "");
}

TEST_F(Menu, ClosesTheFilmWithChiudi) {
    Start();
    ASSERT_TRUE(player_->ChooseEntry(kFilePopup, kChiudi));
    EXPECT_TRUE(player_->WaitForTitle("Kelvo"));
    EXPECT_TRUE(WaitUntil([] { return TheStage().Sound().PlayingStreams() == 0; }));
    EXPECT_TRUE(WaitUntil([&] { return !Image(); }));
}

TEST_F(Menu, ZoomsToTheStatedSizes) {
    Start();
    struct Step {
        Entry entry;
        int width;
        int height;
    };
    constexpr int kExtraWidth = 10;
    constexpr int kExtraHeight = 72;
    constexpr int kFrameWidth = 8; // of the window, in the sizes that the program computes with
    constexpr int kCaptionAndFrame = 46; // its caption, menu and frame
    const int menu_bar = player_->Geometry().height - (kCodedHeight + 24);
    for (const Step& step : {Step{kHalf, 320, 240}, Step{kThreeQuarters, 480, 360},
                             Step{kOneAndAHalf, 960, 720}, Step{kNaturalSize, 640, 480}}) {
        ASSERT_TRUE(player_->ChooseEntry(kOptionsPopup, step.entry));
        const int width = step.width + kExtraWidth - kFrameWidth;
        const int height = step.height + kExtraHeight - kCaptionAndFrame + menu_bar;
        EXPECT_TRUE(WaitUntil([&] {
            return player_->Geometry().width == width && player_->Geometry().height == height;
        })) << step.entry
            << ": " << player_->Geometry().width << " x " << player_->Geometry().height << ", not "
            << width << " x " << height;
    }
}

TEST_F(Menu, TakesTheWindowOutOfTheForegroundAndBack) {
    Start();
    const auto is_above = [this] {
        return TheStage().Screen().HasState(player_->Window(), "_NET_WM_STATE_ABOVE");
    };
    ASSERT_TRUE(WaitUntil(is_above));
    ASSERT_TRUE(player_->ChooseEntry(kOptionsPopup, kTopmost));
    EXPECT_TRUE(WaitUntil([&] { return !is_above(); }));
    EXPECT_TRUE(player_->WaitForTitle("Kelvo - film")); // the window was not made anew
    ASSERT_TRUE(player_->ChooseEntry(kOptionsPopup, kTopmost));
    EXPECT_TRUE(WaitUntil(is_above));
}

TEST_F(Menu, PlaysOverAndOverWithRiproduzioneContinua) {
    Start({.seconds = 3});
    ASSERT_TRUE(player_->ChooseEntry(kOptionsPopup, kContinuous));
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(WaitForImages(60, 74)) << round;
        EXPECT_TRUE(WaitForImages(0, 20)) << round;
    }
}

// --- the position bar --------------------------------------------------------------------------

class PositionBar : public Menu {
protected:
    /// Where the bar lies on the screen: in the strip, from where its colours begin to the right.
    Area Bar() const {
        const int y = picture_.y - 24 + 12;
        const int right = picture_.x + kCodedWidth - 2;
        int left = right - 1;
        const auto strip = TheStage().Screen().Pixel(picture_.x + 167, y); // behind the buttons
        while (left > picture_.x && TheStage().Screen().Pixel(left - 1, y) != strip) {
            --left;
        }
        return {left, y - 7, right - left, 14};
    }
};

TEST_F(PositionBar, FillsWithTheFilmAndSeeksWhereItIsClicked) {
    Start({.seconds = 20}); // 500 images
    const Area bar = Bar();
    ASSERT_GT(bar.width, 100);
    const int y = bar.y + 7;
    const auto filled = [&] {
        // From the left on, everything of the colour that the bar begins with.
        int x = bar.x + 1;
        const auto colour = TheStage().Screen().Pixel(x, y);
        while (x < bar.x + bar.width && TheStage().Screen().Pixel(x, y) == colour) {
            ++x;
        }
        return x - bar.x;
    };
    TheStage().Screen().Click(bar.x + bar.width / 2, y);
    ASSERT_TRUE(WaitForImages(225, 300)) << Image().value_or(-1);
    ASSERT_TRUE(WaitForImages(280, 400)); // and it plays on from there
    EXPECT_TRUE(WaitUntil([&] {
        const int part = filled() * 1000 / bar.width;
        return part > 480 && part < 800;
    })) << filled()
        << " of " << bar.width;
    EXPECT_EQ(TheStage().Sound().PlayingStreams(), 1);
    TheStage().Screen().Click(bar.x + 3, y); // and back
    EXPECT_TRUE(WaitForImages(5, 60)) << Image().value_or(-1);
}

} // namespace
} // namespace kelvo::test
