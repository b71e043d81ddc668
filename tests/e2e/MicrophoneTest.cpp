// A player records what another one plays, through a real sound server whose microphone hears its
// loudspeaker.

#include "tests/e2e/SoundServer.h"

#include "framework/window/LUM.h"
#include "media/AudioFilekel.h"
#include "platform/base/resources.h"
#include "platform/base/threads.h"
#include "platform/desktop/Desktop.h"
#include "playback/AudioPlayerkel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <numbers>
#include <span>

namespace kelvo {
namespace {

using namespace test;

constexpr std::uint32_t kRate = 22050;
constexpr std::array<double, 3> kTones = {300, 700, 1500};
constexpr double kToneSeconds = 0.6;
constexpr std::size_t kToneBytes = static_cast<std::size_t>(kToneSeconds * kRate);

std::uint8_t Melody(std::size_t offset) {
    const double tone = kTones[std::min(offset / kToneBytes, kTones.size() - 1)];
    const double phase = 2 * std::numbers::pi * tone * static_cast<double>(offset) / kRate;
    return static_cast<std::uint8_t>(std::lround(128 + 80 * std::sin(phase)));
}

/// The share of a stretch of 8-bit sound that one tone makes up, 0 to 1, silence 0.
double ShareOf(double tone, std::span<const std::uint8_t> sound) {
    double in_phase = 0;
    double across = 0;
    double energy = 0;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const double value = sound[i] - 128.0;
        const double phase = 2 * std::numbers::pi * tone * static_cast<double>(i) / kRate;
        in_phase += value * std::sin(phase);
        across += value * std::cos(phase);
        energy += value * value;
    }
    const auto count = static_cast<double>(sound.size());
    if (energy / count < 400) return 0; // far below the melody's
    return 2 * (in_phase * in_phase + across * across) / (energy * count);
}

class Microphone : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(mkdtemp(folder_.data()), nullptr);
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ASSERT_TRUE(platform::StartDesktop("microphone tests"));
        ASSERT_EQ(lum.StartDefaultKernel(GetModuleHandleA(nullptr), nullptr), 3);
    }
    void TearDown() override {
        platform::EndDesktop();
        std::filesystem::remove_all(folder_);
    }
    CString Name(const char* file) const { return CString((folder_ + "/" + file).c_str()); }
    CString MakeTrack(const char* file, int frames, std::uint8_t (*byte)(std::size_t)) const {
        AudioFilekel track;
        EXPECT_TRUE(track.Create(Name(file), 99, kRate, 1, 10));
        std::size_t offset = 0;
        std::vector<std::uint8_t> bytes(track.FrameBytes());
        for (int frame = 0; frame < frames; ++frame) {
            for (std::uint8_t& one : bytes) {
                one = byte(offset++);
            }
            EXPECT_TRUE(track.AppendAudioFrame(bytes, 0));
        }
        EXPECT_TRUE(track.Close());
        return Name(file);
    }
    static std::vector<std::uint8_t> SoundOf(const CString& name) {
        AudioFilekel track;
        EXPECT_TRUE(track.OpenForRead(name));
        std::vector<std::uint8_t> sound;
        int number = 0;
        std::uint32_t capture_time = 0;
        while (track.ReadNextAudioFrame(number, capture_time)) {
            sound.insert(sound.end(), track.FrameData().begin(), track.FrameData().end());
        }
        return sound;
    }
    static bool PumpUntil(const std::function<bool()>& condition) {
        return WaitUntil([&] {
            lum.ProcessMessages();
            return condition();
        });
    }

    static void RecordWhilePlaying(const CString& heard, const CString& melody) {
        AudioPlayerkel listener;
        AudioPlayerkel player;
        ASSERT_TRUE(listener.OpenAudioForRecording(heard));
        ASSERT_TRUE(player.OpenAudio(melody));
        ASSERT_TRUE(listener.Record(0, nullptr));
        ASSERT_TRUE(PumpUntil([&] { return listener.CurrentFrame() >= 2; }));
        ASSERT_TRUE(player.Play(nullptr));
        ASSERT_TRUE(PumpUntil([&] { return !player.IsDeviceActive(); }));
        const int ended_at = listener.CurrentFrame();
        ASSERT_TRUE(PumpUntil([&] { return listener.CurrentFrame() >= ended_at + 5; }));
        listener.StopAudio();
        ASSERT_TRUE(PumpUntil([&] { return !listener.IsDeviceActive(); }));
        listener.CloseAudio();
        player.CloseAudio();
        EXPECT_TRUE(PumpUntil([] { return platform::CountWaveDevices() == 0; }));
    }

    std::string folder_ =
        (std::filesystem::temp_directory_path() / "kelvo-microphone-XXXXXX").string();
};

/// How many pieces of 20 ms each tone fills; the tones must come in their order.
std::array<int, kTones.size()> PiecesOfTones(std::span<const std::uint8_t> sound) {
    constexpr std::size_t kPiece = kRate / 50;
    std::array<int, kTones.size()> pieces{};
    std::size_t last_tone = 0;
    for (std::size_t at = 0; at + kPiece <= sound.size(); at += kPiece) {
        for (std::size_t tone = 0; tone < kTones.size(); ++tone) {
            if (ShareOf(kTones[tone], sound.subspan(at, kPiece)) < 0.9) continue;
            EXPECT_GE(tone, last_tone) << at;
            last_tone = tone;
            ++pieces[tone];
        }
    }
    return pieces;
}

TEST_F(Microphone, HearsTheTonesThatThePlayerPlaysInTheirOrder) {
    const SoundServer server(folder_);
    ASSERT_EQ(server.Problem(), "");
    for (const auto& [name, value] : server.ForClients()) {
        setenv(name.c_str(), value->c_str(), 1);
    }
    const CString melody = MakeTrack("melody.kaf", 18, Melody);
    int shortest = 0;
    // A busy machine tears what the server plays: that is tried again.
    for (int attempt = 0; attempt < 5 && shortest < 20; ++attempt) {
        const CString heard =
            MakeTrack("heard.kaf", 200, [](std::size_t) { return std::uint8_t{128}; });
        RecordWhilePlaying(heard, melody);
        const auto pieces = PiecesOfTones(SoundOf(heard)); // 30 of each were played
        shortest = *std::ranges::min_element(pieces);
        EXPECT_LE(*std::ranges::max_element(pieces), 36);
    }
    EXPECT_GE(shortest, 20);
}

} // namespace
} // namespace kelvo
