// The strip above the picture operated by the mouse, and films opened by dialog and menu.

#include "tests/e2e/StageForTests.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <thread>

namespace kelvo::test {
namespace {

constexpr int kStrip = 24;
constexpr int kToolDialogLeft = 169;
constexpr int kThumbAtFullVolume = 218;
constexpr int kSliderRow = 10;
// Where the buttons begin; each is 20 pixels wide.
enum Button : int {
    kOpen = 2,
    kToStart = 26,
    kFastBackward = 46,
    kStop = 66,
    kPause = 86,
    kPlay = 106,
    kFastForward = 126,
    kToEnd = 146,
};
const std::set<int> kAll = {kOpen,  kToStart, kFastBackward, kStop,
                            kPause, kPlay,    kFastForward,  kToEnd};
const std::set<int> kPlaying = {kOpen, kStop, kPause};
const std::set<int> kFast = {kOpen, kStop};

class ToolBar : public OnStage {
protected:
    void Start(const CodedFilmPlan& plan = {.seconds = 20}) {
        player_ = std::make_unique<Player>(TheStage(), std::vector{Film("film.kva", plan)});
        ASSERT_TRUE(player_->WaitForTitle("Kelvo - film"));
        ASSERT_TRUE(WaitForAnyImage(*player_));
        picture_ = *player_->WaitForPicture(kCodedWidth, kCodedHeight);
        MoveAway();
    }
    /// The pointer lies in the pixels that a test reads, and brings tips up.
    void MoveAway() const { Screen().MoveTo(picture_.x + 400, picture_.y + 400); }
    void TearDown() override {
        player_.reset();
        OnStage::TearDown();
    }
    static const VirtualScreen& Screen() { return TheStage().Screen(); }
    std::uint32_t StripPixel(int x, int y) const {
        return Screen().Pixel(picture_.x + x, picture_.y - kStrip + y);
    }
    /// Quicker than any hand: press and release arrive together, and the pointer is gone.
    void Click(Button button) const {
        Screen().Click(picture_.x + button + 10, picture_.y - kStrip + 12);
        MoveAway();
    }
    /// A button is seen by its face, which the strip's grey does not have.
    std::set<int> ShownButtons() const {
        std::set<int> shown;
        for (const int left : kAll) {
            if (StripPixel(left, 2) != StripPixel(left, 0)) shown.insert(left);
        }
        return shown;
    }
    bool WaitForButtons(const std::set<int>& buttons) const {
        return WaitUntil([&] { return ShownButtons() == buttons; });
    }
    /// The places of the elapsed time's pixels: red on black.
    std::set<int> TimePattern() const {
        std::set<int> pattern;
        for (int y = 4; y < 20; ++y) {
            for (int x = kToolDialogLeft; x < kToolDialogLeft + 160; ++x) {
                const auto pixel = StripPixel(x, y);
                if ((pixel >> 16U) > 0xC0 && (pixel & 0xFFFFU) == 0) pattern.insert(y * 1000 + x);
            }
        }
        return pattern;
    }
    /// Waits for the open dialog, with the keyboard in it, above the player, which is topmost.
    bool WaitForOpenDialog() const {
        const auto dialog_is_active = [&] {
            const auto active = Screen().ActiveWindow();
            return active != 0 && active != player_->Window();
        };
        if (!player_->WaitForBox("Apertura Filmato") || !WaitUntil(dialog_is_active)) return false;
        const auto area = Screen().Geometry(Screen().ActiveWindow());
        // Its left part covers the film's picture, of black and white only.
        return area && WaitUntil([&] {
                   const auto pixel = Screen().Pixel(area->x + 3, area->y + area->height / 4);
                   return pixel != 0 && pixel != 0xFFFFFF;
               });
    }
    std::optional<int> Image() const { return ReadBarCode(Screen(), picture_.x, picture_.y); }
    static bool IsSilent() {
        return WaitUntil([] { return TheStage().Sound().PlayingStreams() == 0; });
    }
    /// The loudest of half a second of sound.
    static float Loudness() {
        const Recorder recorder(TheStage().Sound());
        WaitUntil([&] { return recorder.SoFar().samples.size() > SoundServer::kRate / 2; });
        float loudest = 0;
        for (const float sample : recorder.SoFar().samples) {
            loudest = std::max(loudest, std::abs(sample));
        }
        return loudest;
    }

    std::unique_ptr<Player> player_;
    Area picture_;
};

TEST_F(ToolBar, PlaysStopsAndMovesByItsButtons) {
    Start();
    ASSERT_TRUE(WaitForButtons(kPlaying)) << testing::PrintToString(ShownButtons());
    Click(kPause);
    ASSERT_TRUE(WaitUntil([&, last = Image(), since = Clock::now()]() mutable {
        if (const auto now = Image(); now != last) {
            last = now;
            since = Clock::now();
        }
        return Clock::now() - since > std::chrono::milliseconds(400);
    })) << "the picture is not held";
    Click(kPause);
    const auto held = Image();
    EXPECT_TRUE(WaitUntil([&] { return Image() && Image() != held; }));
    Click(kStop);
    ASSERT_TRUE(WaitForButtons(kAll));
    EXPECT_TRUE(IsSilent());
    Click(kToEnd);
    EXPECT_TRUE(WaitUntil([&] { return Image() == 499; })) << Image().value_or(-1);
    Click(kToStart);
    EXPECT_TRUE(WaitUntil([&] { return Image() == 0; }));
    Click(kFastForward);
    ASSERT_TRUE(WaitForButtons(kFast));
    EXPECT_TRUE(WaitUntil([&] { return Image().value_or(0) > 100; }));
    Click(kStop);
    ASSERT_TRUE(WaitForButtons(kAll));
    Click(kFastBackward);
    ASSERT_TRUE(WaitForButtons(kFast));
    EXPECT_TRUE(WaitUntil([&] { return Image() == 0; }));
    Click(kStop);
    ASSERT_TRUE(WaitForButtons(kAll));
    Click(kPlay);
    EXPECT_TRUE(WaitForButtons(kPlaying));
    EXPECT_TRUE(WaitUntil([&] { return Image().value_or(0) > 20; }));
    EXPECT_EQ(TheStage().Sound().PlayingStreams(), 1);
}

TEST_F(ToolBar, CountsTheSecondsInRed) {
    Start();
    ASSERT_TRUE(WaitUntil([&] { return TimePattern().size() > 20; }));
    const auto before = TimePattern();
    EXPECT_TRUE(WaitUntil([&] { return TimePattern() != before; }));
}

TEST_F(ToolBar, TurnsTheSoundDownByItsSlider) {
    Start();
    EXPECT_GT(Loudness(), 0.05F);
    Screen().MoveTo(picture_.x + kThumbAtFullVolume, picture_.y - kStrip + kSliderRow);
    Screen().HoldButton();
    Screen().MoveTo(picture_.x + kThumbAtFullVolume - 20, picture_.y - kStrip + kSliderRow);
    Screen().MoveTo(picture_.x + kToolDialogLeft, picture_.y - kStrip + kSliderRow);
    Screen().ReleaseButton();
    EXPECT_TRUE(WaitUntil([] { return Loudness() < 0.01F; }));
    EXPECT_EQ(TheStage().Sound().PlayingStreams(), 1);
}

TEST_F(ToolBar, OpensFilmsByDialogKeyboardAndRecentList) {
    const std::string other = Film("other.kva", {.seconds = 6});
    Start();
    Click(kOpen);
    ASSERT_TRUE(WaitForOpenDialog());
    EXPECT_EQ(TheStage().Sound().PlayingStreams(), 1); // the film goes on behind it
    Screen().Press("Escape");
    ASSERT_TRUE(WaitUntil([&] { return player_->Boxes().empty(); }));
    EXPECT_EQ(player_->Title(), "Kelvo - film"); // cancelled: nothing changes

    ASSERT_TRUE(player_->ChooseEntry(0, 0)); // "Apri..."
    ASSERT_TRUE(WaitForOpenDialog());
    Screen().Type("other");
    Screen().Press("period");
    Screen().Type("kva");
    Screen().Press("Return");
    ASSERT_TRUE(player_->WaitForTitle("Kelvo - other")) << player_->Title();
    EXPECT_TRUE(WaitForButtons(kAll)); // opened, not played
    EXPECT_TRUE(IsSilent());
    Click(kPlay);
    EXPECT_TRUE(WaitForButtons(kPlaying));

    ASSERT_TRUE(player_->ChooseEntry(0, 3)); // behind Apri, Chiudi and the latest film
    EXPECT_TRUE(player_->WaitForTitle("Kelvo - film")) << player_->Title();
}

TEST_F(ToolBar, TakesHundredsOfClicksOnThePositionBar) {
    Start();
    const int y = picture_.y - kStrip + 12;
    for (int i = 0; i < 200; ++i) {
        Screen().Click(picture_.x + 330 + (i * 37) % 300, y);
        std::this_thread::sleep_for(std::chrono::milliseconds(50)); // a person's hand
    }
    Screen().Click(picture_.x + 320, y);
    EXPECT_TRUE(WaitUntil([&] { return Image() && *Image() > 10 && *Image() < 120; }));
    EXPECT_TRUE(WaitUntil([] { return TheStage().Sound().PlayingStreams() == 1; }));
    Click(kStop);
    EXPECT_TRUE(IsSilent());
    EXPECT_TRUE(WaitForButtons(kAll));
    player_->AskToClose();
    EXPECT_EQ(player_->WaitForExit(), ExitStatus{.code = 0});
    EXPECT_EQ(player_->Process().Errors(), "");
}

} // namespace
} // namespace kelvo::test
