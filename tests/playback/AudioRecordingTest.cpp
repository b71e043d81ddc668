// Recording into a track, from the sound library's driver that reads a file for the microphone.

#include "tests/playback/Films.h"
#include "tests/playback/PlayerWindow.h"

#include "platform/base/file_calls.h"
#include "platform/base/message_boxes.h"
#include "playback/AudioPlayerkel.h"
#include "playback/VideoPlayerkel.h"

#include <atomic>
#include <cerrno>
#include <fstream>
#include <unistd.h>

namespace kelvo {
namespace {

using namespace test;

class Recording : public testing::Test {
protected:
    void SetUp() override {
        setenv("SDL_AUDIODRIVER", "disk", 1);
        // Slow enough that a busy machine gives a buffer back before the next one is full.
        setenv("SDL_DISKAUDIODELAY", "25", 1);
        setenv("SDL_DISKAUDIOFILEIN", folder_.Name("microphone.raw").c_str(), 1);
        setenv("SDL_DISKAUDIOFILE", folder_.Name("played.raw").c_str(), 1);
        std::ofstream file(folder_.Name("microphone.raw").c_str(), std::ios::binary);
        for (std::size_t i = 0; i < 400000; ++i) {
            file.put(static_cast<char>(SpokenByte(i)));
        }
    }
    void TearDown() override {
        player_.CloseAudio();
        setenv("SDL_AUDIODRIVER", "dummy", 1);
        EXPECT_TRUE(PumpUntil([] { return platform::CountWaveDevices() == 0; }));
    }
    /// 16-bit samples whose high byte is always 0x40; no byte is one of the old sound's.
    static std::uint8_t SpokenByte(std::size_t offset) {
        return static_cast<std::uint8_t>(offset % 2 == 1 ? 0x40 : 0x80 + offset / 2 % 101);
    }
    static std::uint8_t OldByte(std::size_t offset) {
        return static_cast<std::uint8_t>(1 + offset % 60);
    }
    void OpenTrack(AudioPlan plan) {
        plan.byte = OldByte;
        MakeAudio(name_, plan);
        ASSERT_TRUE(player_.OpenAudioForRecording(name_));
    }
    bool RunToClose() {
        return PumpUntil([this] { return !player_.IsDeviceActive(); });
    }
    /// The whole sound that stands in the file.
    std::vector<std::uint8_t> Stored() {
        player_.CloseAudio();
        AudioFilekel track;
        EXPECT_TRUE(track.OpenForRead(name_));
        std::vector<std::uint8_t> bytes;
        int number = 0;
        std::uint32_t capture_time = 0;
        while (track.ReadNextAudioFrame(number, capture_time)) {
            bytes.insert(bytes.end(), track.FrameData().begin(), track.FrameData().end());
        }
        return bytes;
    }
    /// How many bytes from an offset on were spoken, in order; everything else must be old.
    static std::size_t SpokenFrom(const std::vector<std::uint8_t>& stored, std::size_t first) {
        std::size_t count = 0;
        while (first + count < stored.size() && stored[first + count] == SpokenByte(count)) {
            ++count;
        }
        for (std::size_t i = 0; i < stored.size(); ++i) {
            if (i < first || i >= first + count) {
                EXPECT_EQ(stored[i], OldByte(i)) << i;
                if (stored[i] != OldByte(i)) break;
            }
        }
        return count;
    }

    FilmFolder folder_;
    CString name_ = folder_.Name("sound.kaf");
    AudioPlayerkel player_;
};

TEST_F(Recording, WritesTheAskedFramesAndEndsByItself) {
    OpenTrack({.frames = 10});
    player_.SetPosition(3);
    ASSERT_TRUE(player_.Record(4, nullptr));
    EXPECT_TRUE(player_.IsCapturing());
    EXPECT_TRUE(player_.Record(1, nullptr)); // changes nothing
    EXPECT_FALSE(player_.Play(nullptr));
    ASSERT_TRUE(RunToClose());
    EXPECT_FALSE(player_.IsCapturing());
    EXPECT_EQ(player_.PlayedFrameCounter(), 6);
    EXPECT_EQ(player_.CurrentFrame(), 7);
    EXPECT_EQ(SpokenFrom(Stored(), std::size_t{3} * 800), std::size_t{4} * 800);
}

TEST_F(Recording, EndsWithTheTrackAndGoesOnWhereAnotherOneBegins) {
    OpenTrack({.frames = 5});
    player_.SetPosition(2);
    ASSERT_TRUE(player_.Record(0, nullptr));
    ASSERT_TRUE(RunToClose());
    EXPECT_EQ(player_.CurrentFrame(), 5);
    ASSERT_TRUE(player_.Record(0, nullptr)); // nothing is left
    ASSERT_TRUE(RunToClose());
    EXPECT_EQ(SpokenFrom(Stored(), std::size_t{2} * 800), std::size_t{3} * 800);
}

TEST_F(Recording, KeepsWhatWasSpokenWheneverItIsStopped) {
    for (const int wait_ms : {0, 5, 60, 130, 270}) {
        OpenTrack({.frames = 40});
        ASSERT_TRUE(player_.Record(0, nullptr));
        const DWORD start = GetTickCount();
        PumpUntil([&] { return GetTickCount() - start >= static_cast<DWORD>(wait_ms); });
        const int before = player_.CurrentFrame();
        player_.StopAudio();
        EXPECT_FALSE(player_.IsCapturing());
        ASSERT_TRUE(RunToClose());
        const std::size_t spoken = SpokenFrom(Stored(), 0);
        EXPECT_GE(spoken, static_cast<std::size_t>(before) * 800);
        EXPECT_TRUE(spoken > 0 || wait_ms < 60) << wait_ms;
    }
}

TEST_F(Recording, KeepsWhatWasSpokenWhenItIsClosedAtOnce) {
    OpenTrack({.frames = 40});
    ASSERT_TRUE(player_.Record(0, nullptr));
    ASSERT_TRUE(PumpUntil([this] { return player_.CurrentFrame() >= 2; }));
    EXPECT_GE(SpokenFrom(Stored(), 0), 1600U); // Stored closes
}

TEST_F(Recording, LeavesNoGapAtAPauseButWhatWasSpokenMeanwhile) {
    OpenTrack({.frames = 30});
    ASSERT_TRUE(player_.Record(12, nullptr));
    ASSERT_TRUE(PumpUntil([this] { return player_.CurrentFrame() >= 2; }));
    const DWORD start = GetTickCount();
    PumpUntil([&] { return GetTickCount() - start >= 30; }); // into the next frame
    EXPECT_TRUE(player_.Pause());
    EXPECT_TRUE(player_.Pause()); // already
    const DWORD held_at = GetTickCount();
    PumpUntil([&] { return GetTickCount() - held_at >= 30; }); // what comes back for the pause
    const int held = player_.CurrentFrame();
    PumpUntil([&] { return GetTickCount() - held_at >= 300; });
    EXPECT_EQ(player_.CurrentFrame(), held);
    EXPECT_TRUE(player_.Resume());
    ASSERT_TRUE(RunToClose());
    EXPECT_EQ(player_.CurrentFrame(), 12);
    // The block that the device had begun is lost, and nothing else: all is spoken, in whole
    // samples.
    const auto stored = Stored();
    for (std::size_t i = 0; i < 12 * 800; ++i) {
        ASSERT_GE(stored[i], 0x40) << i;
        ASSERT_EQ(stored[i] == 0x40, i % 2 == 1) << i;
    }
    EXPECT_EQ(stored[12 * 800], OldByte(12 * 800));
}

TEST_F(Recording, StopsWhileItIsPaused) {
    OpenTrack({.frames = 30});
    ASSERT_TRUE(player_.Record(0, nullptr));
    ASSERT_TRUE(PumpUntil([this] { return player_.CurrentFrame() >= 1; }));
    player_.Pause();
    player_.StopAudio();
    ASSERT_TRUE(RunToClose());
    EXPECT_FALSE(player_.IsPaused());
    EXPECT_GE(SpokenFrom(Stored(), 0), 800U);
}

TEST_F(Recording, KeepsSamplesWholeWhereFramesAreOdd) {
    // 11025 Hz, 16 bits, 10 frames a second: frames of 2205 bytes, frame 1 begins inside a sample.
    OpenTrack({.frames = 8, .rate = 11025, .bytes_per_sample = 2});
    player_.SetPosition(1);
    ASSERT_TRUE(player_.Record(4, nullptr));
    ASSERT_TRUE(RunToClose());
    // Frames 1 to 4 lie on bytes 2205 to 11024; the samples that are recorded over, 2206 to 11023.
    EXPECT_EQ(SpokenFrom(Stored(), 2206), 11024U - 2206);
}

TEST_F(Recording, PlaysAndRecordsAgainAfterAStopInTheSameStep) {
    OpenTrack({.frames = 60});
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(player_.Record(0, nullptr)) << round;
        EXPECT_TRUE(player_.IsCapturing());
        ASSERT_TRUE(PumpUntil([&] { return player_.CurrentFrame() >= 1; })) << round;
        player_.StopAudio();
        player_.SetPosition(0);
    }
    EXPECT_TRUE(player_.CloseAudio());
    ASSERT_TRUE(player_.OpenAudio(name_));
    ASSERT_TRUE(player_.Play(nullptr));
    EXPECT_FALSE(player_.Record(0, nullptr)); // while it plays
    player_.StopAudio();
}

TEST_F(Recording, SaysWhyATrackCannotBeRecordedInto) {
    MakeAudio(name_, {.type = 17});
    EXPECT_FALSE(player_.Record(0, nullptr));           // nothing is open
    EXPECT_FALSE(player_.OpenAudioForRecording(name_)); // not stored as it is
    MakeAudio(name_, {});
    ASSERT_TRUE(player_.OpenAudio(name_));
    platform::MessageBoxRecorder boxes;
    for (const int frame : {0, player_.FrameCount()}) { // behind the last one, too
        player_.SetPosition(frame);
        EXPECT_FALSE(player_.Record(0, nullptr));
        ASSERT_EQ(boxes.Boxes().size(), frame == 0 ? 1U : 2U);
        EXPECT_EQ(
            boxes.Boxes().back().text,
            "L'operazione richiesta può essere eseguita solo su un file aperto in OpenExisting!");
    }
    EXPECT_FALSE(player_.IsDeviceActive());
    EXPECT_TRUE(player_.IsTrackOpen());
}

TEST_F(Recording, SaysWhenThereIsNoMicrophoneAndClosesItsTrack) {
    OpenTrack({});
    setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
    platform::MessageBoxRecorder boxes;
    EXPECT_FALSE(player_.Record(0, nullptr));
    ASSERT_EQ(boxes.Boxes().size(), 1U);
    EXPECT_EQ(boxes.Boxes()[0].text, "waveinOpen() error!");
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
    EXPECT_FALSE(player_.IsTrackOpen());
    EXPECT_EQ(SpokenFrom(Stored(), 0), 0U);
}

std::atomic<int> g_writes_left = 0;

TEST_F(Recording, KeepsTheTrackAndSaysSoOnceOnAFullDisk) {
    OpenTrack({.frames = 20});
    platform::FileCalls calls = platform::SystemFileCalls();
    g_writes_left = 3;
    calls.write = [](int file, const void* bytes, std::size_t count) -> ssize_t {
        if (--g_writes_left >= 0) return ::write(file, bytes, count);
        errno = ENOSPC;
        return -1;
    };
    calls.pwrite = [](int file, const void* bytes, std::size_t count, off_t offset) -> ssize_t {
        if (--g_writes_left >= 0) return ::pwrite(file, bytes, count, offset);
        errno = ENOSPC;
        return -1;
    };
    platform::MessageBoxRecorder boxes;
    {
        const platform::ScopedFileCalls full_disk{calls};
        ASSERT_TRUE(player_.Record(0, nullptr));
        ASSERT_TRUE(RunToClose());
    }
    ASSERT_EQ(boxes.Boxes().size(), 1U);
    EXPECT_EQ(boxes.Boxes()[0].text,
              "Il file [sound.kaf] non può essere scritto!\r\n\r\nRegistrazione interrotta!");
    EXPECT_EQ(SpokenFrom(Stored(), 0), std::size_t{3} * 800);
}

TEST_F(Recording, EndsThePictureThatItIsLinkedTo) {
    PlayerWindow parent;
    ASSERT_EQ(parent.Create(), 1);
    VideoPlayerkel view;
    view.SetParent(&parent);
    view.SetStyle(WS_CHILD | WS_VISIBLE);
    view.SetPlacement(0, 0, 100, 100);
    ASSERT_EQ(view.Create(), 1);
    const CString film = folder_.Name("film.kvf");
    MakeVideo(film, {.images = 200,
                     .sync = [](int image) { return static_cast<std::uint32_t>(image / 2); }});
    ASSERT_TRUE(view.OpenVideo(film));
    OpenTrack({.frames = 100});
    ASSERT_TRUE(view.PlayNormal(&player_));
    ASSERT_TRUE(player_.Record(3, &view));
    ASSERT_TRUE(RunToClose());
    EXPECT_TRUE(PumpUntil([&] { return !view.IsRunning(); }));
    EXPECT_LT(view.CurrentFrame(), 20);
    player_.CloseAudio();
}

} // namespace
} // namespace kelvo
