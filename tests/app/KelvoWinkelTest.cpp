// What the main window opens, how it titles itself, what it plays and when it ends.

#include "tests/app/StartedPlayer.h"

#include "platform/desktop/menus.h"

#include <filesystem>

namespace kelvo {
namespace {

using namespace test;

class MainWindow : public StartedPlayer {};

TEST_F(MainWindow, IsCalledAfterWhatIsOpen) {
    Create();
    EXPECT_EQ(Title(), "Kelvo");
    const CString film = MakePair("clip");
    ASSERT_TRUE(Open(film));
    EXPECT_EQ(Title(), "Kelvo - clip");
    ASSERT_TRUE(Open(folder_.Name("clip.kaf"))); // the other name of the same pair
    EXPECT_EQ(Title(), "Kelvo - clip");
    EXPECT_TRUE(window_->Video().IsTrackOpen());

    std::filesystem::remove(folder_.Name("clip.kaf").c_str());
    ASSERT_TRUE(Open(film));
    EXPECT_EQ(Title(), "Kelvo (No Audio) - clip");
    EXPECT_FALSE(window_->Audio().IsTrackOpen());

    ASSERT_TRUE(Open(MakeSound("song.one", 5)));
    EXPECT_EQ(Title(), "Kelvo (No Video) - song.one");
    EXPECT_FALSE(window_->Video().IsTrackOpen());
    EXPECT_TRUE(TakeBoxes().empty());

    EXPECT_FALSE(Open(folder_.Name("nothing.kva")));
    EXPECT_EQ(Title(), "Kelvo");
    EXPECT_EQ(TakeBoxes(),
              (std::vector<std::string>{"ERRORE: Impossibile Aprire il file VIDEO Specificato"}));
    EXPECT_FALSE(window_->Audio().IsTrackOpen()); // what was open before is closed
}

TEST_F(MainWindow, IsAsHighAsTheLastPictureWhereThereIsOnlySound) {
    Create();
    ASSERT_TRUE(Open(MakeSound("first", 3)));
    EXPECT_EQ(WindowRect().right - WindowRect().left, 400);
    EXPECT_EQ(WindowRect().bottom - WindowRect().top, 160);
    ASSERT_TRUE(Open(MakePair("clip")));
    const LONG shown_height = window_->Video().DisplayHeight();
    ASSERT_TRUE(Open(MakeSound("second", 3)));
    EXPECT_EQ(WindowRect().bottom - WindowRect().top, shown_height + 160);
}

TEST_F(MainWindow, ShowsTheFirstImageOfWhatItOpens) {
    Create();
    ASSERT_TRUE(Open(MakePair("clip")));
    Do(Command::NaturalSize);
    EXPECT_EQ(PixelOf(window_->Video(), 5, 5), ColourOfImage(0));
    Do(Command::ToEnd);
    EXPECT_EQ(PixelOf(window_->Video(), 5, 5), ColourOfImage(49));
    Do(Command::CloseFilm);
    EXPECT_NE(PixelOf(window_->Video(), 5, 5), ColourOfImage(49));
    EXPECT_FALSE(window_->Video().IsTrackOpen());
    EXPECT_FALSE(window_->Audio().IsTrackOpen());
}

TEST_F(MainWindow, PutsCheckMarksWhereAnOptionHolds) {
    Create();
    const auto is_checked = [this](Command command) {
        return (GetMenuState(window_->MenuHandle(), static_cast<UINT>(command), MF_BYCOMMAND) &
                MF_CHECKED) != 0;
    };
    for (const Command command : {Command::Continuous, Command::Topmost}) {
        EXPECT_FALSE(is_checked(command));
        Do(command);
        EXPECT_TRUE(is_checked(command));
        Do(command);
        EXPECT_FALSE(is_checked(command));
    }
}

TEST_F(MainWindow, PlaysOverAndOverWhileContinuousIsChosen) {
    Create();
    ASSERT_TRUE(Open(MakePair("clip", {.images = 15, .audio_frames = 3})));
    Do(Command::Continuous);
    Do(Command::Play);
    int rounds = 0;
    int before = 0;
    EXPECT_TRUE(PumpUntil([&] {
        const int image = window_->Video().CurrentFrame();
        if (image < before) ++rounds;
        before = image;
        return rounds >= 3;
    }));
    EXPECT_EQ(window_->Endings(), 0);
    Do(Command::Continuous);
    EXPECT_TRUE(PumpUntil([&] { return window_->Endings() == 1; }));
}

TEST_F(MainWindow, ShowsAFilmByItsPeriodWhereThereIsNoDevice) {
    setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
    Create();
    ASSERT_TRUE(Open(MakePair("clip")));
    const DWORD start = GetTickCount();
    Do(Command::Play);
    EXPECT_EQ(TakeBoxes(), (std::vector<std::string>{"ERRORE: waveOutOpen() error!"}));
    EXPECT_TRUE(PumpUntil([&] { return window_->Endings() == 1; }));
    EXPECT_GE(GetTickCount() - start, 900U); // 50 images of 20 ms
    EXPECT_EQ(window_->Video().CurrentFrame(), 50);
    EXPECT_TRUE(TakeBoxes().empty());
}

TEST_F(MainWindow, IsDestroyedWhileAFilmPlays) {
    for (int round = 0; round < 5; ++round) {
        Create();
        ASSERT_TRUE(Open(MakePair(("clip" + std::to_string(round)).c_str())));
        Do(Command::Play);
        EXPECT_TRUE(PumpUntil([&] { return window_->Video().CurrentFrame() > 2 * round; }));
        window_.reset();
    }
    EXPECT_TRUE(PumpUntil([] { return platform::CountWaveDevices() == 0; }));
}

} // namespace
} // namespace kelvo
