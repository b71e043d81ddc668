#include "tests/playback/Films.h"
#include "tests/playback/PlayerWindow.h"

#include "platform/base/message_boxes.h"
#include "playback/AudioPlayerkel.h"
#include "playback/VideoPlayerkel.h"

namespace kelvo {
namespace {

using namespace test;

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new StartedFramework);
constexpr COLORREF kDarkBlue = RGB(0, 0, 90);

class View : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(parent_.Create(), 1);
        view_.SetParent(&parent_);
        view_.SetStyle(WS_CHILD | WS_VISIBLE);
        view_.SetPlacement(0, 0, 300, 200);
        ASSERT_EQ(view_.Create(), 1);
        lum.ProcessMessages();
    }
    void OpenFilm(const VideoPlan& plan) {
        const CString name = folder_.Name("film.kvf");
        MakeVideo(name, plan);
        ASSERT_TRUE(view_.OpenVideo(name));
        lum.ProcessMessages();
    }
    bool RunToEnd() {
        return PumpUntil([this] { return !view_.IsRunning(); });
    }
    std::vector<INT_PTR> Steps() const {
        std::vector<INT_PTR> steps;
        for (const auto& one : parent_.Notifications()) {
            if (one.code == NotifyProgress) steps.push_back(one.a);
        }
        return steps;
    }

    FilmFolder folder_;
    PlayerWindow parent_;
    VideoPlayerkel view_;
};

TEST_F(View, RefusesWhatIsNoFilmAndStaysDarkBlue) {
    EXPECT_FALSE(view_.OpenVideo(folder_.Name("nothing.kvf")));
    EXPECT_FALSE(view_.IsTrackOpen());
    EXPECT_FALSE(view_.SetZoom(1));
    EXPECT_FALSE(view_.FitToWindow());
    InvalidateRect(view_.Window(), nullptr, TRUE);
    lum.ProcessMessages();
    EXPECT_EQ(PixelOf(view_, 1, 1), kDarkBlue);
}

TEST_F(View, ShowsTheFirstImageAndStepsClampedInBothDirections) {
    OpenFilm({.images = 5, .type = 8});
    EXPECT_EQ(view_.CurrentFrame(), 0);
    EXPECT_EQ(PixelOf(view_, 3, 3), ColourOfImage(0));
    EXPECT_EQ(PixelOf(view_, kImageWidth, 3), kDarkBlue);
    for (const auto& [delta, image] : {std::pair{3, 3}, {9, 4}, {-1, 3}, {-99, 0}}) {
        EXPECT_TRUE(view_.StepFrames(delta));
        EXPECT_EQ(view_.CurrentFrame(), image);
        lum.ProcessMessages();
        EXPECT_EQ(PixelOf(view_, 3, 3), ColourOfImage(image));
    }
    EXPECT_TRUE(view_.CloseVideo());
    view_.Redraw();
    lum.ProcessMessages();
    EXPECT_EQ(PixelOf(view_, 3, 3), kDarkBlue);
}

TEST_F(View, DrawsInSevenSizes) {
    OpenFilm({});
    struct ZoomCase {
        int mode;
        RECT room;
        LONG width, height;
    };
    const ZoomCase cases[] = {
        {1, {}, 32, 24},
        {2, {0, 0, 640, 400}, 533, 400}, // limited by the height: 32 / (24 / 400)
        {2, {0, 0, 64, 400}, 64, 48},    // limited by the width
        {3, {}, 8, 6},
        {4, {}, 16, 12},
        {5, {}, 24, 18},
        {6, {}, 48, 36},
        {7, {}, 64, 48},
    };
    for (const ZoomCase& one : cases) {
        EXPECT_TRUE(view_.SetZoom(one.mode, one.room)) << one.mode;
        EXPECT_EQ(view_.DisplayWidth(), one.width) << one.mode;
        EXPECT_EQ(view_.DisplayHeight(), one.height) << one.mode;
    }
    EXPECT_FALSE(view_.SetZoom(2, RECT{0, 0, 9, 100}));
    EXPECT_EQ(view_.ZoomMode(), 7); // refused: the mode stays
    EXPECT_FALSE(view_.SetZoom(8));
    EXPECT_EQ(view_.ZoomMode(), 8); // stored before its range is looked at
    EXPECT_EQ(view_.DisplayWidth(), 64);
    EXPECT_TRUE(view_.FitToWindow()); // 300 x 178
    EXPECT_EQ(view_.DisplayHeight(), 178);
    EXPECT_EQ(view_.DisplayWidth(), 237);
}

TEST_F(View, PlaysASilentFilmByItsPeriodAndTellsItsEnd) {
    OpenFilm({.images = 21, .images_per_second = 50});
    const DWORD start = GetTickCount();
    ASSERT_TRUE(view_.PlayNormal(nullptr));
    ASSERT_TRUE(PumpUntil([this] { return parent_.Count(NotifyEnded) == 1; }));
    // 21 images, the last one kept for its period, too; wide above for a machine under load.
    EXPECT_GE(GetTickCount() - start, 21U * 20 - 5);
    EXPECT_LT(GetTickCount() - start, 3000U);
    const auto notes = parent_.Notifications();
    EXPECT_EQ(notes.front(), (PlayerWindow::Notification{NotifyStarted, 0, 21, 0}));
    EXPECT_EQ(notes.back(), (PlayerWindow::Notification{NotifyEnded, 21, 21, 0}));
    EXPECT_EQ(Steps(), (std::vector<INT_PTR>{10, 20}));
    lum.ProcessMessages();
    EXPECT_EQ(PixelOf(view_, 3, 3), ColourOfImage(20));
    EXPECT_TRUE(RunToEnd());
}

TEST_F(View, PlaysOverAndOverUntilItIsStopped) {
    OpenFilm({.images = 10, .images_per_second = 100});
    view_.ToggleContinuous();
    ASSERT_TRUE(view_.PlayNormal(nullptr));
    ASSERT_TRUE(PumpUntil([this] { return Steps().size() >= 3; }));
    view_.StopPlayback();
    EXPECT_TRUE(RunToEnd());
    EXPECT_EQ(parent_.Count(NotifyEnded), 0);
}

TEST_F(View, TreatsARateBelowOneAsOneImageASecond) {
    OpenFilm({.images = 3, .images_per_second = 0});
    EXPECT_EQ(view_.nImgAlSec(), 1);
    ASSERT_TRUE(view_.FastBackward()); // steps of 2 images, 500 ms
    EXPECT_TRUE(RunToEnd());
    ASSERT_TRUE(view_.PlayNormal(nullptr));
    view_.StopPlayback();
    EXPECT_TRUE(RunToEnd());
}

TEST_F(View, PlaysAtARateThatNoScreenHas) {
    OpenFilm({.images = 40, .images_per_second = 32767});
    view_.StepFrames(3);
    ASSERT_TRUE(view_.FastForward());
    EXPECT_TRUE(RunToEnd());
    EXPECT_EQ(Steps(), (std::vector<INT_PTR>{3}));
    ASSERT_TRUE(view_.FastBackward());
    EXPECT_TRUE(RunToEnd());
    ASSERT_TRUE(view_.PlayNormal(nullptr));
    EXPECT_TRUE(PumpUntil([this] { return parent_.Count(NotifyEnded) == 1; }));
    EXPECT_TRUE(RunToEnd());
}

TEST_F(View, HoldsASilentPicture) {
    OpenFilm({.images = 200, .images_per_second = 100});
    ASSERT_TRUE(view_.PlayNormal(nullptr));
    ASSERT_TRUE(PumpUntil([this] { return view_.CurrentFrame() > 3; }));
    view_.HoldPicture(true);
    Sleep(50);
    const int held = view_.CurrentFrame();
    Sleep(200);
    EXPECT_EQ(view_.CurrentFrame(), held);
    view_.HoldPicture(false);
    EXPECT_TRUE(PumpUntil([&] { return view_.CurrentFrame() > held; }));
    view_.HoldPicture(true);
    view_.StopPlayback(); // a held picture can be stopped
    EXPECT_TRUE(RunToEnd());
}

struct BackwardCase {
    const char* name;
    int from;
    std::vector<INT_PTR> steps;
};
class Backward : public View, public testing::WithParamInterface<BackwardCase> {};
const BackwardCase kBackwardCases[] = {
    {"FromFarAway", 100, {100, 80, 60, 40, 20, 0, 0}},
    {"FromTheBeginning", 5, {5, 0}},
};
TEST_P(Backward, ShowsEveryTwoSecondsAndThenTheFirstImage) {
    OpenFilm({.images = 120, .images_per_second = 10, .type = 7, .key_interval = 10});
    view_.StepFrames(GetParam().from);
    ASSERT_TRUE(view_.FastBackward());
    EXPECT_TRUE(RunToEnd());
    EXPECT_EQ(Steps(), GetParam().steps);
    lum.ProcessMessages();
    EXPECT_EQ(PixelOf(view_, 3, 3), ColourOfImage(0));
}
INSTANTIATE_TEST_SUITE_P(All, Backward, testing::ValuesIn(kBackwardCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(View, FastForwardStepsASecondAtATimeWhereImagesStandAlone) {
    OpenFilm({.images = 95, .images_per_second = 20});
    view_.StepFrames(7);
    ASSERT_TRUE(view_.FastForward());
    EXPECT_TRUE(RunToEnd());
    EXPECT_EQ(Steps(), (std::vector<INT_PTR>{7, 27, 47, 67, 87}));
    EXPECT_EQ(parent_.Count(NotifyEnded), 0);
}

TEST_F(View, FastForwardReadsImagesThatBuildOnEachOtherInOrder) {
    OpenFilm({.images = 101, .images_per_second = 20, .type = 5});
    const DWORD start = GetTickCount();
    ASSERT_TRUE(view_.FastForward());
    EXPECT_TRUE(RunToEnd());
    EXPECT_GE(GetTickCount() - start, 850U); // 100 images a second, for the first second
    EXPECT_EQ(Steps().size(), 10U);
}

TEST_F(View, RefusesToPlayWhatIsOpenForEditing) {
    platform::MessageBoxRecorder boxes;
    EXPECT_FALSE(view_.PlayNormal(nullptr)); // and what is not open at all
    ASSERT_EQ(boxes.Boxes().size(), 1U);
    EXPECT_EQ(boxes.Boxes()[0].text,
              "Play Normal può essere usato solo con file aperti non in Editing!");
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
}

TEST_F(View, ClosesAtOnceWhatPlaysAndDiesWithItsWindow) {
    OpenFilm({.images = 300, .images_per_second = 1});
    ASSERT_TRUE(view_.PlayNormal(nullptr));
    ASSERT_TRUE(PumpUntil([this] { return view_.CurrentFrame() > 0; }));
    const DWORD start = GetTickCount();
    EXPECT_TRUE(view_.CloseVideo()); // the wait for the next image is a second long
    EXPECT_LT(GetTickCount() - start, 900U);
    OpenFilm({.images = 300, .images_per_second = 100});
    ASSERT_TRUE(view_.PlayNormal(nullptr));
    DestroyWindow(parent_.Window());
    EXPECT_FALSE(view_.IsRunning());
    EXPECT_FALSE(view_.IsTrackOpen());
}

TEST_F(View, NeverShowsItsBackgroundBelowThePictureWhileAFilmPlays) {
    OpenFilm({.images = 3000, .images_per_second = 1000});
    view_.SetZoom(7);
    view_.Redraw();
    lum.ProcessMessages();
    view_.ToggleContinuous();
    ASSERT_TRUE(view_.PlayNormal(nullptr));
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < 1000) {
        view_.Redraw();
        lum.ProcessMessages();
        ASSERT_NE(PixelOf(view_, 3, 3), kDarkBlue);
        ASSERT_NE(PixelOf(view_, 2 * kImageWidth - 1, 2 * kImageHeight - 1), kDarkBlue);
        ASSERT_EQ(PixelOf(view_, 2 * kImageWidth, 3), kDarkBlue);
    }
    // A smaller picture leaves nothing of the larger one.
    view_.SetZoom(3);
    view_.Redraw();
    EXPECT_TRUE(PumpUntil([this] { return PixelOf(view_, kImageWidth, 3) == kDarkBlue; }));
    EXPECT_NE(PixelOf(view_, 3, 3), kDarkBlue);
}

TEST_F(View, SurvivesEveryCommandInEveryStateAndIsPaintedMeanwhile) {
    OpenFilm({.images = 500, .images_per_second = 100, .type = 8, .key_interval = 20});
    for (int round = 0; round < 60; ++round) {
        switch (round % 6) {
        case 0:
            view_.PlayNormal(nullptr);
            break;
        case 1:
            view_.FastForward();
            break;
        case 2:
            view_.FastBackward();
            break;
        case 3:
            view_.StepFrames(17);
            break;
        case 4:
            view_.StopPlayback();
            break;
        default:
            view_.SetZoom(1 + round % 7, RECT{0, 0, 200, 100});
            break;
        }
        parent_.SetSize(200 + round, 150 + round);
        view_.SetSize(100 + round, 100 + round);
        view_.Redraw();
        lum.ProcessMessages();
        Sleep(static_cast<DWORD>(round % 4));
    }
    EXPECT_TRUE(view_.CloseVideo());
    EXPECT_FALSE(view_.IsRunning());
}

} // namespace
} // namespace kelvo
