// The sound player on the silent driver (in real time), and on the one that writes what it plays
// into a file.

#include "tests/playback/Films.h"
#include "tests/playback/PlayerWindow.h"

#include "platform/base/message_boxes.h"
#include "playback/AudioPlayerkel.h"
#include "playback/VideoPlayerkel.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <utility>

namespace kelvo {
namespace {

using namespace test;

class Sound : public testing::Test {
protected:
    void SetUp() override {
        setenv("SDL_AUDIODRIVER", "dummy", 1);
        ASSERT_EQ(parent_.Create(), 1);
    }
    void OpenSound(const AudioPlan& plan) {
        const CString name = folder_.Name("sound.kaf");
        MakeAudio(name, plan);
        player_.SetParent(nullptr);
        ASSERT_TRUE(player_.OpenAudio(name));
        player_.SetParent(&parent_);
    }
    bool RunToClose() {
        return PumpUntil([this] { return !player_.IsDeviceActive(); });
    }

    FilmFolder folder_;
    PlayerWindow parent_;
    AudioPlayerkel player_;
};

TEST_F(Sound, CountsTheFramesThatItHandsOverAndClosesAtTheEnd) {
    OpenSound({.frames = 4});
    EXPECT_EQ(player_.PlayedFrameCounter(), 0);
    EXPECT_FALSE(player_.SetVolume(1000)); // before the device is open
    EXPECT_EQ(player_.GetVolume(), 0);
    EXPECT_FALSE(player_.Pause());
    const DWORD start = GetTickCount();
    ASSERT_TRUE(player_.Play(nullptr));
    EXPECT_TRUE(player_.Play(nullptr)); // changes nothing
    EXPECT_TRUE(player_.SetVolume(32640));
    EXPECT_EQ(player_.GetVolume(), 32640);
    ASSERT_TRUE(PumpUntil([this] { return parent_.Count(NotifyAudioStarted) == 1; }));
    EXPECT_EQ(player_.PlayedFrameCounter(), 1);
    ASSERT_TRUE(RunToClose());
    EXPECT_GE(GetTickCount() - start, 370U); // 400 ms on a clock that is a little fast
    EXPECT_EQ(player_.PlayedFrameCounter(), 4);
    EXPECT_EQ(parent_.Count(NotifyAudioBuffer), 2); // two of four frames were queued at once
    EXPECT_EQ(parent_.Count(NotifyAudioClosed), 1);
    EXPECT_EQ(parent_.Notifications().back().code, NotifyAudioClosed);
    EXPECT_TRUE(player_.HasRunOut());
    EXPECT_TRUE(player_.IsTrackOpen());
}

TEST_F(Sound, PlaysTracksOfOneAndTwoFrames) {
    for (const int frames : {1, 2}) {
        OpenSound({.frames = frames});
        parent_.Forget();
        ASSERT_TRUE(player_.Play(nullptr));
        ASSERT_TRUE(RunToClose());
        EXPECT_EQ(player_.PlayedFrameCounter(), frames);
        EXPECT_EQ(parent_.Count(NotifyAudioClosed), 1);
        player_.CloseAudio();
    }
}

struct RoundCase {
    const char* name;
    int from;
    std::vector<int> counts; ///< at each refilled buffer
};
class EndlessSound : public Sound, public testing::WithParamInterface<RoundCase> {};
const RoundCase kRoundCases[] = {
    {"FromItsFirstFrame", 0, {2, 0, 1, 2, 0}},
    {"FromItsLastFrame", 2, {1, 2, 0, 1, 2}},
};
TEST_P(EndlessSound, BeginsAnewAtItsEnd) {
    OpenSound({.frames = 3});
    player_.SetContinuous(true);
    player_.SetPosition(GetParam().from);
    std::vector<int> counts;
    parent_.on_notification = [&](int code, INT_PTR, INT_PTR) {
        if (code == NotifyAudioBuffer) counts.push_back(player_.PlayedFrameCounter());
    };
    ASSERT_TRUE(player_.Play(nullptr));
    ASSERT_TRUE(PumpUntil([&] { return counts.size() >= 5; }));
    EXPECT_EQ(std::vector<int>(counts.begin(), counts.begin() + 5), GetParam().counts);
    player_.CloseAudio();
    parent_.on_notification = nullptr;
}
INSTANTIATE_TEST_SUITE_P(All, EndlessSound, testing::ValuesIn(kRoundCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Sound, OpensAnotherTrackWhileItPlays) {
    OpenSound({.frames = 50});
    ASSERT_TRUE(player_.Play(nullptr));
    ASSERT_TRUE(PumpUntil([this] { return player_.PlayedFrameCounter() >= 2; }));
    OpenSound({.frames = 2, .rate = 4000}); // of smaller buffers
    EXPECT_FALSE(player_.IsDeviceActive());
    EXPECT_EQ(player_.PlayedFrameCounter(), 0);
    ASSERT_TRUE(player_.Play(nullptr));
    EXPECT_TRUE(RunToClose());
    EXPECT_EQ(player_.PlayedFrameCounter(), 2);
}

TEST_F(Sound, PausesAndResumes) {
    OpenSound({.frames = 30});
    ASSERT_TRUE(player_.Play(nullptr));
    ASSERT_TRUE(PumpUntil([this] { return player_.PlayedFrameCounter() >= 2; }));
    EXPECT_TRUE(player_.TogglePause());
    EXPECT_TRUE(player_.Pause()); // already
    const int held = player_.PlayedFrameCounter();
    const DWORD start = GetTickCount();
    PumpUntil([&] { return GetTickCount() - start > 300; });
    EXPECT_EQ(player_.PlayedFrameCounter(), held);
    EXPECT_FALSE(player_.TogglePause());
    EXPECT_TRUE(PumpUntil([&] { return player_.PlayedFrameCounter() > held; }));
}

struct SkipCase {
    const char* name;
    std::uint32_t frames_per_second;
    int start;
    std::vector<int> counts; // after each refill
};
class FastSound : public Sound, public testing::WithParamInterface<SkipCase> {};
const SkipCase kSkipCases[] = {
    // The count is the one after the two first frames: start + 1.
    {"TenAtATimeAtOneASecond", 1, 0, {11, 21}},
    {"TenWhenEvenAtFiveASecond", 5, 0, {2, 12, 22}},
    {"TwentyWhenAMultipleOfThreeAtTen", 10, 1, {3, 23, 24, 44}},
    {"FiftyWhenAMultipleOfNineAtFifty", 50, 7, {9, 59, 60, 61, 62, 63, 113}},
};
TEST_P(FastSound, SkipsByItsRate) {
    OpenSound({.frames = 200, .frames_per_second = GetParam().frames_per_second});
    player_.SetPosition(GetParam().start);
    std::vector<int> counts;
    parent_.on_notification = [&](int code, INT_PTR, INT_PTR) {
        if (code == NotifyAudioBuffer) counts.push_back(player_.PlayedFrameCounter());
    };
    ASSERT_TRUE(player_.FastForward());
    EXPECT_TRUE(player_.IsFastForward());
    ASSERT_TRUE(PumpUntil([&] { return counts.size() >= GetParam().counts.size(); }));
    player_.CloseAudio();
    parent_.on_notification = nullptr;
    counts.resize(GetParam().counts.size());
    EXPECT_EQ(counts, GetParam().counts);
}
INSTANTIATE_TEST_SUITE_P(All, FastSound, testing::ValuesIn(kSkipCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Sound, PlaysAfterAStopInTheSameStep) {
    OpenSound({.frames = 100});
    ASSERT_TRUE(player_.Play(nullptr));
    for (int round = 0; round < 10; ++round) {
        player_.StopAudio();
        EXPECT_FALSE(player_.IsPlaying());
        player_.SetPosition(10 * round);
        ASSERT_TRUE(player_.Play(nullptr)) << round;
        EXPECT_TRUE(player_.IsPlaying());
        ASSERT_TRUE(PumpUntil([&] { return player_.PlayedFrameCounter() == 10 * round + 1; }))
            << round;
    }
    EXPECT_TRUE(player_.CloseAudio());
}

TEST_F(Sound, StopsBeforeTheDeviceHasReportedItsOpening) {
    OpenSound({.frames = 100});
    ASSERT_TRUE(player_.Play(nullptr));
    player_.StopAudio();
    ASSERT_TRUE(RunToClose());
    EXPECT_EQ(parent_.Count(NotifyAudioStarted), 0);
    EXPECT_EQ(parent_.Count(NotifyAudioClosed), 1);
}

TEST_F(Sound, ClosesWithinItsWaitAndLeavesNoDevice) {
    for (const int delay_ms : {0, 3, 30, 150}) {
        OpenSound({.frames = 100});
        ASSERT_TRUE(player_.Play(nullptr));
        const DWORD start = GetTickCount();
        PumpUntil([&] { return GetTickCount() - start >= static_cast<DWORD>(delay_ms); });
        const DWORD close_start = GetTickCount();
        EXPECT_TRUE(player_.CloseAudio());
        EXPECT_LT(GetTickCount() - close_start, 2300U);
        EXPECT_FALSE(player_.IsTrackOpen());
        EXPECT_FALSE(player_.HasWindow());
    }
    EXPECT_TRUE(PumpUntil([] { return platform::CountWaveDevices() == 0; }));
}

TEST_F(Sound, SaysWhenThereIsNoDeviceAndClosesItsTrack) {
    OpenSound({});
    setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
    platform::MessageBoxRecorder boxes;
    EXPECT_FALSE(player_.Play(nullptr));
    ASSERT_EQ(boxes.Boxes().size(), 1U);
    EXPECT_EQ(boxes.Boxes()[0].text, "waveOutOpen() error!");
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
    EXPECT_FALSE(player_.IsTrackOpen());
    EXPECT_FALSE(player_.Play(nullptr));
}

// --- what is heard -----------------------------------------------------------------------------

class RecordedSound : public Sound {
protected:
    void SetUp() override {
        Sound::SetUp();
        setenv("SDL_AUDIODRIVER", "disk", 1);
        setenv("SDL_DISKAUDIOFILE", folder_.Name("played.raw").c_str(), 1);
    }
    std::vector<std::uint8_t> Played() const {
        std::ifstream file(folder_.Name("played.raw").c_str(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// A 16-bit sample whose low byte is never 0x40 and whose high byte always is.
    static std::uint8_t MarkedByte(std::size_t offset) {
        return static_cast<std::uint8_t>(offset % 2 == 1 ? 0x40 : 0x80 + offset / 2 % 100);
    }
};

TEST_F(RecordedSound, HandsOverEveryByteInOrder) {
    const auto byte = [](std::size_t offset) {
        return static_cast<std::uint8_t>(1 + offset % 101);
    };
    OpenSound({.frames = 5, .byte = byte});
    ASSERT_TRUE(player_.Play(nullptr));
    ASSERT_TRUE(RunToClose());
    std::vector<std::uint8_t> expected(5 * 800);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        expected[i] = byte(i);
    }
    const auto played = Played();
    EXPECT_FALSE(std::ranges::search(played, expected).empty());
}

TEST_F(RecordedSound, StaysInOrderWhileTheBoxOfADamagedFrameIsOpen) {
    const auto byte = [](std::size_t offset) {
        return static_cast<std::uint8_t>(1 + offset % 101);
    };
    constexpr std::size_t kFrames = 7;
    const CString name = folder_.Name("sound.kaf");
    MakeAudio(name, {.frames = kFrames, .byte = byte});
    {
        // The fourth frame claims to be a byte longer than it is.
        std::fstream file(name.c_str(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(1052 + 34 + 3 * (4 + 800 + 32));
        file.put(static_cast<char>(801 % 256));
    }
    int boxes = 0;
    auto before = platform::SetMessageBoxHandler([&](const platform::MessageBoxRequest& request) {
        ++boxes;
        // Long enough for the device to have given back the other buffer, too.
        const DWORD opened = GetTickCount();
        EXPECT_TRUE(PumpUntil([opened] { return GetTickCount() - opened > 400; }));
        return platform::SafeAnswer(request.type);
    });
    ASSERT_TRUE(player_.OpenAudio(name));
    ASSERT_TRUE(player_.Play(nullptr));
    const bool closed = RunToClose();
    platform::SetMessageBoxHandler(std::move(before));
    ASSERT_TRUE(closed);
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(player_.PlayedFrameCounter(), static_cast<int>(kFrames));
    std::vector<std::uint8_t> expected(kFrames * 800);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        expected[i] = byte(i);
    }
    auto played = Played();
    std::erase(played, std::uint8_t{0x80}); // silence around the sound, and while it waited
    EXPECT_EQ(played, expected);
}

TEST_F(RecordedSound, NeverSwapsTheBytesOfASampleWhereFramesAreOdd) {
    // 11025 Hz, 16 bits, 10 frames a second: frames of 2205 bytes.
    OpenSound({.frames = 5, .rate = 11025, .bytes_per_sample = 2, .byte = MarkedByte});
    player_.SetContinuous(true);
    player_.SetPosition(1); // begins inside a sample
    int refills = 0;
    parent_.on_notification = [&](int code, INT_PTR, INT_PTR) {
        if (code == NotifyAudioBuffer) ++refills;
    };
    ASSERT_TRUE(player_.Play(nullptr));
    // Twice round: the whole sound is odd, too.
    ASSERT_TRUE(PumpUntil([&] { return refills >= 12; }));
    player_.CloseAudio();
    parent_.on_notification = nullptr;
    const auto played = Played();
    std::size_t whole = 0;
    for (std::size_t i = 0; i + 1 < played.size(); i += 2) {
        EXPECT_NE(played[i], 0x40) << i; // a low byte is never in the place of a high one
        if (played[i + 1] == 0x40) ++whole;
    }
    EXPECT_GT(whole, 10U * 1100);
}

// --- picture and sound -------------------------------------------------------------------------

class Film : public Sound {
protected:
    void SetUp() override {
        Sound::SetUp();
        view_.SetParent(&parent_);
        view_.SetStyle(WS_CHILD | WS_VISIBLE);
        view_.SetPlacement(0, 0, 100, 100);
        ASSERT_EQ(view_.Create(), 1);
    }
    void TearDown() override { player_.CloseAudio(); } // before the view that it may be linked to
    void OpenPicture(const VideoPlan& plan) {
        const CString name = folder_.Name("film.kvf");
        MakeVideo(name, plan);
        ASSERT_TRUE(view_.OpenVideo(name));
    }
    void Start() {
        player_.SyncToVideo(view_);
        ASSERT_TRUE(view_.PlayNormal(&player_));
        ASSERT_TRUE(player_.Play(nullptr));
    }

    VideoPlayerkel view_;
};

TEST_F(Film, NeverRunsAheadOfItsSoundAndShowsTheLastImage) {
    OpenPicture({.images = 50, .images_per_second = 50, .sync = [](int image) {
                     return static_cast<std::uint32_t>(image / 5);
                 }});
    OpenSound({.frames = 10});
    std::map<INT_PTR, int> count_at_image;
    parent_.on_notification = [&](int code, INT_PTR a, INT_PTR) {
        if (code == NotifyProgress) count_at_image[a] = player_.PlayedFrameCounter();
    };
    Start();
    ASSERT_TRUE(PumpUntil([this] { return parent_.Count(NotifyEnded) == 1; }));
    PumpUntil([this] { return !view_.IsRunning(); });
    parent_.on_notification = nullptr;
    ASSERT_EQ(count_at_image.size(), 5U);
    for (const auto& [next_image, count] : count_at_image) {
        EXPECT_GE(count, (next_image - 1) / 5 + 1) << next_image;
    }
    lum.ProcessMessages();
    EXPECT_EQ(PixelOf(view_, 3, 3), ColourOfImage(49));
}

TEST_F(Film, GoesOnByItsPeriodWhereTheSoundIsShorter) {
    OpenPicture({.images = 40, .images_per_second = 50, .sync = [](int image) {
                     return static_cast<std::uint32_t>(image / 5);
                 }});
    OpenSound({.frames = 3});
    Start();
    EXPECT_TRUE(PumpUntil([this] { return parent_.Count(NotifyEnded) == 1; }));
}

TEST_F(Film, BeginsAnewTogetherWithItsSound) {
    OpenPicture({.images = 20, .images_per_second = 50, .sync = [](int image) {
                     return static_cast<std::uint32_t>(image / 5);
                 }});
    OpenSound({.frames = 5}); // a little longer than the picture
    view_.ToggleContinuous();
    player_.SetContinuous(true);
    int highest_count_at_start = 0;
    int rounds = 0;
    parent_.on_notification = [&](int code, INT_PTR a, INT_PTR) {
        if (code != NotifyProgress || a != 10) return;
        ++rounds; // image 9 belongs to audio frame 1
        highest_count_at_start =
            std::max<int>(highest_count_at_start, player_.PlayedFrameCounter());
    };
    Start();
    ASSERT_TRUE(PumpUntil([&] { return rounds >= 4; }));
    view_.CloseVideo();
    player_.CloseAudio();
    parent_.on_notification = nullptr;
    EXPECT_LE(highest_count_at_start, 3);
}

TEST_F(Film, PlaysAPictureThatWasNeverLinkedByItsPeriod) {
    OpenPicture({.images = 30, .images_per_second = 50});
    OpenSound({.frames = 20});
    view_.StepFrames(15);
    ASSERT_TRUE(player_.SyncToVideo(view_));
    EXPECT_EQ(player_.PlayedFrameCounter(), 3); // the same time: 15 / 50 s
    view_.StepFrames(-15);
    Start();
    EXPECT_TRUE(PumpUntil([this] { return parent_.Count(NotifyEnded) == 1; }));
}

TEST_F(Film, HoldsPictureAndSoundTogether) {
    OpenPicture({.images = 100, .images_per_second = 10, .sync = [](int image) {
                     return static_cast<std::uint32_t>(image / 10);
                 }});
    OpenSound({.frames = 10, .frames_per_second = 1});
    Start();
    ASSERT_TRUE(PumpUntil([this] { return view_.CurrentFrame() >= 3; }));
    view_.HoldPicture(true);
    player_.Pause();
    const DWORD settle = GetTickCount();
    PumpUntil([&] { return GetTickCount() - settle > 30; });
    const int held = view_.CurrentFrame();
    const DWORD start = GetTickCount();
    PumpUntil([&] { return GetTickCount() - start > 400; }); // inside one audio frame
    EXPECT_EQ(view_.CurrentFrame(), held);
    view_.HoldPicture(false);
    player_.Resume();
    EXPECT_TRUE(PumpUntil([&] { return view_.CurrentFrame() > held + 1; }));
}

TEST_F(Film, RefusesFastSoundWhileAPictureIsLinked) {
    OpenPicture({});
    OpenSound({});
    ASSERT_TRUE(player_.Play(&view_));
    EXPECT_FALSE(player_.FastForward());
    EXPECT_FALSE(player_.IsFastForward());
}

} // namespace
} // namespace kelvo
