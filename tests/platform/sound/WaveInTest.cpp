// The wave input through its calls, on the sound library's driver that reads what is recorded from
// a file.

#include "tests/platform/sound/SoundFixture.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace kelvo::platform {
namespace {

class WaveIn : public SoundFixture {
protected:
    void SetUp() override {
        SoundFixture::SetUp();
        path_ = std::filesystem::temp_directory_path() /
                ("kelvo-microphone-" + std::to_string(getpid()) + ".raw");
        UseDriver("disk");
        setenv("SDL_DISKAUDIOFILEIN", path_.c_str(), 1);
        setenv("SDL_DISKAUDIODELAY", "5", 1);
        // Marked samples: the high byte is always 0x40, the low byte never.
        for (std::size_t i = 0; i < 200000; ++i) {
            microphone_.push_back(
                static_cast<std::uint8_t>(i % 2 == 1 ? 0x40 : 0x80 + i / 2 % 101));
        }
        std::ofstream file(path_, std::ios::binary);
        file.write(reinterpret_cast<const char*>(microphone_.data()),
                   static_cast<std::streamsize>(microphone_.size()));
    }
    void TearDown() override {
        if (device_ != nullptr) {
            waveInReset(device_);
            waveInClose(device_);
        }
        SoundFixture::TearDown();
        std::filesystem::remove(path_);
    }
    void Open(const WAVEFORMATEX& format) {
        ASSERT_EQ(waveInOpen(&device_, WAVE_MAPPER, &format, reinterpret_cast<DWORD_PTR>(window_),
                             0, CALLBACK_WINDOW),
                  MMSYSERR_NOERROR);
        ASSERT_TRUE(PumpUntil([] { return Count(MM_WIM_OPEN) == 1; }));
        EXPECT_EQ(g_noted[0].device, reinterpret_cast<WPARAM>(device_));
    }
    MMRESULT Add(WAVEHDR& header) const {
        waveInPrepareHeader(device_, &header, sizeof header);
        return waveInAddBuffer(device_, &header, sizeof header);
    }
    /// What has come back so far, in the order of the reports.
    static std::vector<std::uint8_t> Recorded() {
        std::vector<std::uint8_t> bytes;
        for (const Noted& one : g_noted) {
            if (one.message != MM_WIM_DATA) continue;
            const auto* data = reinterpret_cast<const std::uint8_t*>(one.header->lpData);
            bytes.insert(bytes.end(), data, data + one.header->dwBytesRecorded);
        }
        return bytes;
    }
    static bool StartsWith(const std::vector<std::uint8_t>& whole,
                           const std::vector<std::uint8_t>& part) {
        return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
    }

    std::filesystem::path path_;
    std::vector<std::uint8_t> microphone_;
    HWAVEIN device_ = nullptr;
};

TEST_F(WaveIn, SaysWhyItDoesNotOpen) {
    const auto window = reinterpret_cast<DWORD_PTR>(window_);
    const WAVEFORMATEX good = Pcm(11025, 8);
    HWAVEIN device = nullptr;
    EXPECT_EQ(waveInOpen(nullptr, WAVE_MAPPER, &good, window, 0, CALLBACK_WINDOW),
              MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveInOpen(&device, WAVE_MAPPER, &good, window, 0, 0), MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveInOpen(&device, 3, &good, window, 0, CALLBACK_WINDOW), MMSYSERR_BADDEVICEID);
    for (const WAVEFORMATEX& bad : {Pcm(0, 8), Pcm(11025, 24), WAVEFORMATEX{}}) {
        EXPECT_EQ(waveInOpen(&device, WAVE_MAPPER, &bad, window, 0, CALLBACK_WINDOW),
                  WAVERR_BADFORMAT);
    }
    setenv("SDL_DISKAUDIOFILEIN", "/nowhere/microphone", 1);
    const MMRESULT without_input =
        waveInOpen(&device, WAVE_MAPPER, &good, window, 0, CALLBACK_WINDOW);
    EXPECT_TRUE(without_input == MMSYSERR_BADDEVICEID || without_input == MMSYSERR_ALLOCATED);
    UseDriver("no-such-driver");
    EXPECT_EQ(waveInOpen(&device, WAVE_MAPPER, &good, window, 0, CALLBACK_WINDOW),
              MMSYSERR_NODRIVER);
    EXPECT_EQ(device, nullptr);
    EXPECT_TRUE(g_noted.empty());
    EXPECT_EQ(waveInStart(device), MMSYSERR_INVALHANDLE);
}

TEST_F(WaveIn, FillsItsBuffersAsOneStreamAndClosesAfterGivingAllBack) {
    Open(Pcm(8000, 16));
    std::array<std::vector<std::uint8_t>, 5> bytes;
    bytes.fill(std::vector<std::uint8_t>(1001)); // odd: samples are cut in two
    std::array<WAVEHDR, 5> headers{};
    for (std::size_t i = 0; i < headers.size(); ++i) {
        headers[i] = HeaderOf(bytes[i]);
        EXPECT_EQ(waveInAddBuffer(device_, &headers[i], sizeof(WAVEHDR)), WAVERR_UNPREPARED);
        EXPECT_EQ(Add(headers[i]), MMSYSERR_NOERROR);
        EXPECT_EQ(Add(headers[i]), WAVERR_STILLPLAYING);
    }
    EXPECT_EQ(waveInUnprepareHeader(device_, headers.data(), sizeof(WAVEHDR)), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveInClose(device_), WAVERR_STILLPLAYING);
    ASSERT_EQ(waveInStart(device_), MMSYSERR_NOERROR);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WIM_DATA) >= 3; }));
    EXPECT_EQ(waveInReset(device_), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInClose(device_), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInClose(device_), MMSYSERR_INVALHANDLE);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WIM_CLOSE) == 1; }));
    ASSERT_EQ(g_noted.size(), 7U);
    EXPECT_EQ(g_noted.back().message, MM_WIM_CLOSE);
    for (std::size_t i = 0; i < headers.size(); ++i) {
        EXPECT_EQ(g_noted[1 + i].header, &headers[i]);
        EXPECT_EQ(headers[i].dwFlags & (WHDR_DONE | WHDR_INQUEUE), WHDR_DONE);
    }
    EXPECT_GE(Recorded().size(), 3003U);
    EXPECT_TRUE(StartsWith(microphone_, Recorded()));
    device_ = nullptr;
}

TEST_F(WaveIn, GivesTheBegunBufferBackWhenItStopsAndGoesOnWithTheNext) {
    Open(Pcm(8000, 16));
    std::array<std::vector<std::uint8_t>, 2> bytes;
    bytes.fill(std::vector<std::uint8_t>(20000));
    std::array<WAVEHDR, 2> headers = {HeaderOf(bytes[0]), HeaderOf(bytes[1])};
    ASSERT_EQ(Add(headers[0]), MMSYSERR_NOERROR);
    ASSERT_EQ(Add(headers[1]), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInStop(device_), MMSYSERR_NOERROR); // nothing begun
    // Nobody but the device may look into a queued buffer, so some time must do.
    EXPECT_TRUE(PumpUntil([&] {
        waveInStart(device_);
        Sleep(40);
        waveInStop(device_);
        return Count(MM_WIM_DATA) > 0;
    }));
    EXPECT_GT(headers[0].dwBytesRecorded, 0U);
    EXPECT_LT(headers[0].dwBytesRecorded, 20000U);
    EXPECT_EQ(g_noted[1].header, headers.data());
    EXPECT_TRUE(StartsWith(microphone_, Recorded()));
    EXPECT_EQ(waveInReset(device_), MMSYSERR_NOERROR);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WIM_DATA) == 2; }));
    EXPECT_EQ(g_noted[2].header, &headers[1]);
}

TEST_F(WaveIn, LosesWholeSamplesWhileNoBufferIsQueued) {
    Open(Pcm(8000, 16));
    std::array<std::vector<std::uint8_t>, 2> bytes;
    bytes.fill(std::vector<std::uint8_t>(1001));
    std::array<WAVEHDR, 2> headers = {HeaderOf(bytes[0]), HeaderOf(bytes[1])};
    ASSERT_EQ(Add(headers[0]), MMSYSERR_NOERROR);
    waveInStart(device_);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WIM_DATA) == 1; }));
    const DWORD start = GetTickCount();
    PumpUntil([start] { return GetTickCount() - start > 50; });
    ASSERT_EQ(Add(headers[1]), MMSYSERR_NOERROR);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WIM_DATA) == 2; }));
    const std::vector<std::uint8_t> recorded = Recorded();
    ASSERT_EQ(recorded.size(), 2002U);
    EXPECT_FALSE(StartsWith(microphone_, recorded));
    for (std::size_t i = 1; i < recorded.size(); i += 2) {
        ASSERT_EQ(recorded[i], 0x40) << i;
    }
    EXPECT_EQ(recorded[1000], microphone_[1000]); // the two halves of the sample that was cut
}

} // namespace
} // namespace kelvo::platform
