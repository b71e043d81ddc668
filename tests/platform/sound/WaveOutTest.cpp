// The wave device through its calls, on the sound library's silent driver (real time, no sound) and
// on the one that writes what it plays into a file.

#include "platform/sound/HeardClock.h"
#include "tests/platform/sound/SoundFixture.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <unistd.h>

namespace kelvo::platform {
namespace {

/// On the silent driver, unless a test says otherwise.
class WaveOut : public SoundFixture {
protected:
    void TearDown() override {
        if (device_ != nullptr) {
            waveOutReset(device_);
            waveOutClose(device_);
        }
        SoundFixture::TearDown();
    }
    MMRESULT Open(const WAVEFORMATEX& format) {
        return waveOutOpen(&device_, WAVE_MAPPER, &format, reinterpret_cast<DWORD_PTR>(window_), 0,
                           CALLBACK_WINDOW);
    }
    void Queue(WAVEHDR& header) const {
        ASSERT_EQ(waveOutPrepareHeader(device_, &header, sizeof header), MMSYSERR_NOERROR);
        ASSERT_EQ(waveOutWrite(device_, &header, sizeof header), MMSYSERR_NOERROR);
    }

    HWAVEOUT device_ = nullptr;
};

TEST_F(WaveOut, SaysWhyItDoesNotOpen) {
    const auto window = reinterpret_cast<DWORD_PTR>(window_);
    const WAVEFORMATEX good = Pcm(11025, 8);
    HWAVEOUT device = nullptr;
    EXPECT_EQ(waveOutOpen(nullptr, WAVE_MAPPER, &good, window, 0, CALLBACK_WINDOW),
              MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutOpen(&device, WAVE_MAPPER, nullptr, window, 0, CALLBACK_WINDOW),
              MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutOpen(&device, WAVE_MAPPER, &good, window, 0, 0), MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutOpen(&device, 3, &good, window, 0, CALLBACK_WINDOW), MMSYSERR_BADDEVICEID);
    for (const WAVEFORMATEX& bad : {Pcm(0, 8), Pcm(11025, 24), WAVEFORMATEX{}}) {
        EXPECT_EQ(waveOutOpen(&device, WAVE_MAPPER, &bad, window, 0, CALLBACK_WINDOW),
                  WAVERR_BADFORMAT);
    }
    UseDriver("no-such-driver");
    EXPECT_EQ(waveOutOpen(&device, WAVE_MAPPER, &good, window, 0, CALLBACK_WINDOW),
              MMSYSERR_NODRIVER);
    EXPECT_EQ(device, nullptr);
    EXPECT_TRUE(g_noted.empty());
}

TEST_F(WaveOut, ReportsEachBufferOnceItHasBeenHeardThenItsClose) {
    ASSERT_EQ(Open(Pcm(11025, 8)), MMSYSERR_NOERROR);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WOM_OPEN) == 1; }));
    EXPECT_EQ(g_noted[0].device, reinterpret_cast<WPARAM>(device_));
    std::array<std::vector<std::uint8_t>, 2> bytes;
    bytes.fill(std::vector<std::uint8_t>(2205, 127));
    std::array<WAVEHDR, 2> headers = {HeaderOf(bytes[0]), HeaderOf(bytes[1])};
    EXPECT_EQ(waveOutWrite(device_, headers.data(), sizeof(WAVEHDR)), WAVERR_UNPREPARED);
    const DWORD start = GetTickCount();
    Queue(headers[0]);
    Queue(headers[1]);
    EXPECT_EQ(waveOutWrite(device_, headers.data(), sizeof(WAVEHDR)), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutUnprepareHeader(device_, headers.data(), sizeof(WAVEHDR)),
              WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutClose(device_), WAVERR_STILLPLAYING);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WOM_DONE) == 2; }));
    EXPECT_EQ(g_noted[1].header, &headers[0]);
    EXPECT_EQ(g_noted[2].header, &headers[1]);
    // 200 ms of sound each. The silent device's clock is a few per cent fast.
    EXPECT_GE(g_noted[1].at_ms - start, 180U);
    EXPECT_GE(g_noted[2].at_ms - start, 370U);
    EXPECT_EQ(headers[0].dwFlags & (WHDR_DONE | WHDR_INQUEUE), WHDR_DONE);
    EXPECT_EQ(waveOutUnprepareHeader(device_, headers.data(), sizeof(WAVEHDR)), MMSYSERR_NOERROR);
    EXPECT_EQ(headers[0].dwFlags & WHDR_PREPARED, 0U);
    MMTIME time{};
    time.wType = TIME_BYTES;
    EXPECT_EQ(waveOutGetPosition(device_, &time, sizeof time), MMSYSERR_NOERROR);
    EXPECT_EQ(time.u.cb, 4410U);
    time.wType = TIME_MS;
    EXPECT_EQ(waveOutGetPosition(device_, &time, sizeof time), MMSYSERR_NOERROR);
    EXPECT_EQ(time.u.ms, 400U);
    EXPECT_EQ(waveOutClose(device_), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutClose(device_), MMSYSERR_INVALHANDLE);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WOM_CLOSE) == 1; }));
    EXPECT_EQ(g_noted.back().message, MM_WOM_CLOSE);
    EXPECT_EQ(waveOutPause(device_), MMSYSERR_INVALHANDLE);
    device_ = nullptr;
}

TEST_F(WaveOut, GivesEveryBufferBackOnResetThenClosesOnce) {
    ASSERT_EQ(Open(Pcm(11025, 8)), MMSYSERR_NOERROR);
    std::array<std::vector<std::uint8_t>, 2> bytes;
    bytes.fill(std::vector<std::uint8_t>(110250, 127)); // 10 s
    std::array<WAVEHDR, 2> headers = {HeaderOf(bytes[0]), HeaderOf(bytes[1])};
    Queue(headers[0]);
    Queue(headers[1]);
    EXPECT_EQ(waveOutReset(device_), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutClose(device_), MMSYSERR_NOERROR);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WOM_CLOSE) == 1; }));
    ASSERT_EQ(g_noted.size(), 4U);
    EXPECT_EQ(g_noted[0].message, MM_WOM_OPEN);
    EXPECT_EQ(g_noted[1].header, &headers[0]);
    EXPECT_EQ(g_noted[2].header, &headers[1]);
    EXPECT_EQ(g_noted[3].message, MM_WOM_CLOSE);
    device_ = nullptr;
}

TEST_F(WaveOut, HoldsItsPositionWhilePaused) {
    ASSERT_EQ(Open(Pcm(8000, 16)), MMSYSERR_NOERROR);
    std::vector<std::uint8_t> bytes(16000, 0); // 1 s
    WAVEHDR header = HeaderOf(bytes);
    Queue(header);
    const auto position = [this] {
        MMTIME time{};
        time.wType = TIME_SAMPLES;
        waveOutGetPosition(device_, &time, sizeof time);
        return time.u.sample;
    };
    ASSERT_TRUE(PumpUntil([&] { return position() > 500; }));
    EXPECT_EQ(waveOutPause(device_), MMSYSERR_NOERROR);
    Sleep(60); // what the device had taken is still heard
    const DWORD held = position();
    Sleep(300);
    EXPECT_EQ(position(), held);
    EXPECT_EQ(Count(MM_WOM_DONE), 0);
    EXPECT_EQ(waveOutRestart(device_), MMSYSERR_NOERROR);
    ASSERT_TRUE(PumpUntil([] { return Count(MM_WOM_DONE) == 1; }));
    EXPECT_EQ(position(), 8000U);
}

/// Plays into a file and reads what was played.
class WaveOutFile : public WaveOut {
protected:
    void SetUp() override {
        WaveOut::SetUp();
        UseDriver("disk");
        path_ = std::filesystem::temp_directory_path() /
                ("kelvo-sound-" + std::to_string(getpid()) + ".raw");
        setenv("SDL_DISKAUDIOFILE", path_.c_str(), 1);
    }
    void TearDown() override {
        WaveOut::TearDown();
        std::filesystem::remove(path_);
    }
    /// Plays the buffers one after the other and closes. @return what stands in the file
    std::vector<std::uint8_t> Played(const WAVEFORMATEX& format,
                                     std::vector<std::vector<std::uint8_t>> buffers,
                                     DWORD volume = 0xFFFFFFFF) {
        EXPECT_EQ(Open(format), MMSYSERR_NOERROR);
        EXPECT_EQ(waveOutSetVolume(device_, volume), MMSYSERR_NOERROR);
        DWORD told = 0;
        EXPECT_EQ(waveOutGetVolume(device_, &told), MMSYSERR_NOERROR);
        EXPECT_EQ(told, volume);
        std::vector<WAVEHDR> headers;
        for (auto& buffer : buffers) {
            headers.push_back(HeaderOf(buffer));
        }
        for (WAVEHDR& header : headers) {
            Queue(header);
        }
        EXPECT_TRUE(PumpUntil(
            [&] { return Count(MM_WOM_DONE) == static_cast<std::ptrdiff_t>(buffers.size()); }));
        waveOutClose(device_);
        EXPECT_TRUE(PumpUntil([] { return Count(MM_WOM_CLOSE) == 1; }));
        device_ = nullptr;
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::filesystem::path path_;
};

TEST_F(WaveOutFile, KeepsASampleWholeThatTwoBuffersShare) {
    std::vector<std::uint8_t> stream(2 * 1501);
    for (std::size_t i = 0; i < stream.size(); ++i) {
        stream[i] = static_cast<std::uint8_t>(i % 2 == 0 ? 1 + i / 2 % 250 : 0x40);
    }
    // Odd lengths, so that samples are cut in two.
    const std::vector<std::uint8_t> first(stream.begin(), stream.begin() + 1001);
    const std::vector<std::uint8_t> second(stream.begin() + 1001, stream.begin() + 2002);
    const std::vector<std::uint8_t> third(stream.begin() + 2002, stream.end());
    const auto played = Played(Pcm(8000, 16), {first, second, third});
    const auto found = std::ranges::search(played, stream);
    ASSERT_EQ(found.size(), stream.size());
    EXPECT_EQ((found.begin() - played.begin()) % 2, 0);
    EXPECT_TRUE(std::all_of(played.begin(), found.begin(), [](auto byte) { return byte == 0; }));
}

TEST_F(WaveOutFile, ReportsABufferThatEndsInsideASample) {
    const auto played = Played(Pcm(8000, 16), {std::vector<std::uint8_t>(801, 0x11)});
    EXPECT_EQ(std::ranges::count(played, 0x11), 800);
}

TEST_F(WaveOutFile, AppliesTheVolumeOfTheLeftChannelToMonoSound) {
    std::vector<std::uint8_t> loud(1000, 228);
    auto played = Played(Pcm(8000, 8), {loud}, 0x00008000);
    EXPECT_EQ(std::ranges::count(played, 178), 1000); // 128 + 100 / 2
    g_noted.clear();
    std::vector<std::uint8_t> samples;
    for (int i = 0; i < 500; ++i) {
        samples.insert(samples.end(), {0x00, 0x80}); // the lowest sample
    }
    played = Played(Pcm(8000, 16), {samples}, 0xFFFF4000);
    EXPECT_EQ(std::ranges::count(played, 0xE0), 500); // a quarter
}

TEST(HeardClock, FollowsTheSampleRateThroughBurstsAndTheDeviceThroughDrift) {
    using namespace std::chrono_literals;
    HeardClock clock(8000, 20ms);
    const HeardClock::Time start{100s};
    // The device takes three blocks of 10 ms at once, then one every 10 ms.
    EXPECT_EQ(clock.TakeBlock(start, 80), start + 20ms);
    const auto second = clock.TakeBlock(start, 80);
    EXPECT_GT(second, start + 28ms);
    EXPECT_LE(second, start + 30ms);
    // A device that is 1 % slow pulls the estimate along, without a jump.
    HeardClock::Time now = start;
    HeardClock::Time heard = clock.TakeBlock(now, 80);
    for (int block = 1; block < 3000; ++block) {
        now += 10100us;
        const auto next = clock.TakeBlock(now, 80);
        EXPECT_NEAR(std::chrono::duration<double>(next - heard).count(), 0.0101, 0.002);
        heard = next;
    }
    EXPECT_NEAR(std::chrono::duration<double>(heard - now).count(), 0.020, 0.003);
    // After a gap it begins anew.
    now += 1s;
    EXPECT_EQ(clock.TakeBlock(now, 80), now + 20ms);
}

} // namespace
} // namespace kelvo::platform
