// The transport commands, what they refuse, and seeking by the position bar.

#include "tests/app/StartedPlayer.h"

#include <algorithm>
#include <cstdio>

namespace kelvo {
namespace {

using namespace test;

class Transport : public StartedPlayer {
protected:
    void SetUp() override {
        StartedPlayer::SetUp();
        Create();
    }
    int Image() const { return window_->Video().CurrentFrame(); }
    int AudioFrame() const { return window_->Audio().PlayedFrameCounter(); }
    bool Plays() const { return window_->Video().IsRunning() || window_->Audio().IsPlaying(); }
    bool WaitForImage(int number) const {
        return PumpUntil([&] { return Image() >= number; });
    }
};

struct Refusal {
    Command command;
    std::vector<std::string> boxes;
};

TEST_F(Transport, RefusesWithNothingOpen) {
    for (const Refusal& one : {
             Refusal{Command::ToStart, {"Impossibile eseguire: Nessun File Aperto!"}},
             Refusal{Command::ToEnd, {"Impossibile eseguire: Nessun File Aperto!"}},
             Refusal{Command::FastBackward, {"Impossibile eseguire: Nessun Video Aperto!"}},
             Refusal{Command::FastForward, {"Impossibile eseguire: Nessun file Aperto!"}},
             Refusal{Command::Stop, {}},
             Refusal{Command::Pause, {}},
         }) {
        Do(one.command);
        EXPECT_EQ(TakeBoxes(), one.boxes) << static_cast<int>(one.command);
        EXPECT_FALSE(Plays());
    }
}

TEST_F(Transport, RefusesToGoBackFastInSoundAlone) {
    ASSERT_TRUE(Open(MakeSound("song", 10)));
    Do(Command::FastBackward);
    EXPECT_EQ(TakeBoxes(),
              (std::vector<std::string>{"Impossibile eseguire: Nessun Video Aperto!"}));
}

TEST_F(Transport, GoesToBothEndsOfAFilm) {
    ASSERT_TRUE(Open(MakePair("clip")));
    Do(Command::ToEnd);
    EXPECT_EQ(Image(), 49);
    EXPECT_EQ(AudioFrame(), 9);
    Do(Command::ToStart);
    EXPECT_EQ(Image(), 0);
    EXPECT_EQ(AudioFrame(), 0);
    // And while it plays: it stops there.
    Do(Command::Play);
    ASSERT_TRUE(WaitForImage(5));
    Do(Command::ToEnd);
    EXPECT_TRUE(PumpUntil([&] { return !Plays(); }));
    EXPECT_EQ(Image(), 49);
    EXPECT_EQ(AudioFrame(), 9);
}

TEST_F(Transport, PlaysFromWhereItStoppedAndBeginsAnewAtTheEnd) {
    ASSERT_TRUE(Open(MakePair("clip")));
    Do(Command::Play);
    ASSERT_TRUE(WaitForImage(12));
    Do(Command::Stop);
    ASSERT_TRUE(PumpUntil([&] { return !Plays(); }));
    const int stopped_at = Image();
    EXPECT_LT(stopped_at, 40);
    EXPECT_EQ(AudioFrame(), stopped_at / 5); // the sound of the image that is shown
    int lowest = stopped_at;
    Do(Command::Play);
    ASSERT_TRUE(PumpUntil([&] {
        lowest = std::min(lowest, Image());
        return window_->Endings() == 1;
    }));
    EXPECT_EQ(lowest, stopped_at);
    ASSERT_TRUE(PumpUntil([&] { return !Plays(); }));
    Do(Command::Play);
    EXPECT_TRUE(PumpUntil([&] { return Plays() && Image() > 0 && Image() < 20; }));
}

TEST_F(Transport, HoldsAFilmAndLetsItGoOn) {
    for (const bool with_sound : {true, false}) {
        const CString film = MakePair(with_sound ? "loud" : "silent");
        if (!with_sound) std::remove(folder_.Name("silent.kaf").c_str());
        ASSERT_TRUE(Open(film));
        Do(Command::Pause); // nothing plays: nothing is held
        EXPECT_FALSE(window_->Video().IsPictureHeld());
        Do(Command::Play);
        ASSERT_TRUE(WaitForImage(8));
        Do(Command::Pause);
        const DWORD settle = GetTickCount();
        PumpUntil([&] { return GetTickCount() - settle > 50; });
        const int held = Image();
        const DWORD start = GetTickCount();
        PumpUntil([&] { return GetTickCount() - start > 200; }); // ten images long
        EXPECT_EQ(Image(), held) << with_sound;
        Do(Command::Pause);
        EXPECT_TRUE(WaitForImage(held + 5)) << with_sound;
    }
}

TEST_F(Transport, HoldsSoundAlone) {
    ASSERT_TRUE(Open(MakeSound("song", 30)));
    Do(Command::Play);
    ASSERT_TRUE(PumpUntil([&] { return AudioFrame() >= 2; }));
    Do(Command::Pause);
    EXPECT_TRUE(window_->Audio().IsPaused());
    Do(Command::Pause);
    EXPECT_FALSE(window_->Audio().IsPaused());
    const int before = AudioFrame();
    EXPECT_TRUE(PumpUntil([&] { return AudioFrame() > before; }));
}

TEST_F(Transport, MovesFastThroughAFilm) {
    ASSERT_TRUE(Open(MakePair("clip", {.images = 400, .audio_frames = 80})));
    Do(Command::FastForward);
    EXPECT_FALSE(window_->Audio().IsPlaying());
    EXPECT_TRUE(PumpUntil([&] { return !Plays(); }));
    EXPECT_GE(Image(), 351); // a second of images a step
    Do(Command::FastBackward);
    EXPECT_TRUE(PumpUntil([&] { return !Plays(); }));
    lum.ProcessMessages();
    Do(Command::NaturalSize);
    EXPECT_EQ(PixelOf(window_->Video(), 5, 5), ColourOfImage(0));
}

TEST_F(Transport, MovesFastThroughSoundAlone) {
    ASSERT_TRUE(Open(MakeSound("song", 200)));
    Do(Command::FastForward);
    EXPECT_TRUE(window_->Audio().IsFastForward());
    EXPECT_TRUE(PumpUntil([&] { return AudioFrame() > 40; }));
    EXPECT_TRUE(TakeBoxes().empty());
}

TEST_F(Transport, TriesAgainToPlaySoundAloneThatNoDeviceTook) {
    ASSERT_TRUE(Open(MakeSound("song", 50)));
    window_->HandleNotification(kPositionClicked, 20, 0);
    Do(Command::Stop);
    ASSERT_TRUE(PumpUntil([&] { return !window_->Audio().IsDeviceActive(); }));
    const int stopped_at = window_->Audio().CurrentFrame();
    setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
    for (const Command command : {Command::Play, Command::FastForward, Command::Play}) {
        Do(command);
        EXPECT_EQ(TakeBoxes(), (std::vector<std::string>{"ERRORE: waveOutOpen() error!"}));
        EXPECT_EQ(Title(), "Kelvo (No Video) - song");
    }
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    Do(Command::Play);
    EXPECT_TRUE(PumpUntil([&] { return Plays() && AudioFrame() > stopped_at; }));
    EXPECT_LT(AudioFrame(), 45);
    EXPECT_TRUE(TakeBoxes().empty());
}

TEST_F(Transport, ClosesSoundAloneThatVanishedWhileNoDeviceTookIt) {
    const CString song = MakeSound("song", 50);
    ASSERT_TRUE(Open(song));
    std::remove(song.Text());
    setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
    Do(Command::Play);
    EXPECT_EQ(Title(), "Kelvo");
    TakeBoxes();
    Do(Command::ToStart);
    EXPECT_EQ(TakeBoxes(), (std::vector<std::string>{"Impossibile eseguire: Nessun File Aperto!"}));
}

// --- the position bar --------------------------------------------------------------------------

TEST_F(Transport, SeeksInAFilm) {
    ASSERT_TRUE(Open(MakePair("clip", {.images = 200, .audio_frames = 40})));
    Do(Command::Play);
    ASSERT_TRUE(WaitForImage(3));
    window_->HandleNotification(kPositionClicked, 120, 0);
    EXPECT_TRUE(PumpUntil([&] { return Plays() && Image() > 122; }));
    EXPECT_LT(Image(), 180);
    EXPECT_GE(AudioFrame(), 24);
    EXPECT_TRUE(PumpUntil([&] { return window_->PositionBar().Values().value > 120; }));
    EXPECT_EQ(window_->PositionBar().Values().total, 200);
}

TEST_F(Transport, SeeksInSoundAlone) {
    ASSERT_TRUE(Open(MakeSound("song", 50)));
    window_->HandleNotification(kPositionClicked, 30, 0);
    EXPECT_TRUE(PumpUntil([&] { return AudioFrame() == 31; }));
    EXPECT_TRUE(PumpUntil([&] { return window_->PositionBar().Values().value >= 31; }));
    EXPECT_EQ(window_->PositionBar().Values().total, 50);
    window_->HandleNotification(kPositionClicked, 5000, 0); // clamped
    EXPECT_TRUE(PumpUntil([&] { return AudioFrame() == 50; }));
    EXPECT_TRUE(PumpUntil([&] { return !Plays(); }));
}

} // namespace
} // namespace kelvo
