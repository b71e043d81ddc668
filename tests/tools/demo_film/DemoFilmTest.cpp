// The demo film as it comes out of its maker: picture and sound must agree in it, or nobody could
// tell by it whether they agree in the player.

#include "media/AudioFilekel.h"
#include "media/VideoFilekel.h"
#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace kelvo::test {

namespace {

constexpr int kSeconds = 20;
constexpr int kImagesPerSecond = 25;
constexpr int kSampleRate = 44100;

/// Made once, in a working directory of its own.
class DemoFilm : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<ToolFolder>();
        made_ = RunProgram(DEMO_FILM, {"demo.kva"}, {.folder = folder_->Folder()});
    }
    static void TearDownTestSuite() { folder_.reset(); }
    void SetUp() override { ASSERT_EQ(made_.code, 0) << made_.messages; }

    static std::string Path(const std::string& name) { return folder_->Path(name); }
    static std::vector<std::string> Names() { return folder_->Names(); }

    /// Sum of all channels of the picture that was read last.
    static std::uint64_t Light(const VideoFilekel& track) {
        std::uint64_t light = 0;
        const ByteView bits = track.FrameBits();
        for (std::size_t i = 0; i + 1 < bits.size(); i += 2) {
            const unsigned pixel = bits[i] | static_cast<unsigned>(bits[i + 1]) << 8U;
            light += (pixel >> 10U & 31U) + (pixel >> 5U & 31U) + (pixel & 31U);
        }
        return light;
    }

private:
    static inline std::unique_ptr<ToolFolder> folder_;
    static inline ToolResult made_;
};

TEST_F(DemoFilm, IsWholeAndOfTheKindThatWasPromised) {
    EXPECT_THAT(Names(), testing::ElementsAre("demo.kva"));
    EXPECT_EQ(RunTool({"verify", Path("demo.kva")}).code, 0);
    VideoFilekel picture;
    ASSERT_TRUE(picture.OpenForRead(Path("demo.kva").c_str()));
    EXPECT_EQ(picture.Width(), 640);
    EXPECT_EQ(picture.Height(), 480);
    EXPECT_EQ(picture.nImgAlSec(), kImagesPerSecond);
    EXPECT_EQ(picture.CompressionType(), 8U);
    EXPECT_EQ(picture.FrameCount(), kSeconds * kImagesPerSecond);
    AudioFilekel sound;
    ASSERT_TRUE(sound.OpenForRead(Path("demo.kva").c_str()));
    EXPECT_TRUE(sound.IsVorbis());
    EXPECT_EQ(sound.nFramesAlSec(), 5U);
    EXPECT_EQ(sound.FrameCount(), kSeconds * 5);
}

TEST_F(DemoFilm, EveryFifthImageBeginsAnAudioFrameAndEverySecondAPulse) {
    VideoFilekel picture;
    ASSERT_TRUE(picture.OpenForRead(Path("demo.kva").c_str()));
    std::uint64_t before = 0;
    for (int image = 0; image < picture.FrameCount(); ++image) {
        FrameSide side;
        ASSERT_TRUE(picture.ReadNextFrame(side));
        EXPECT_EQ(side.SyncNumber, static_cast<std::uint32_t>(image / 5));
        const std::uint64_t light = Light(picture);
        // Only a pulse makes the picture so much brighter from one image to the next.
        if (image > 0) {
            EXPECT_EQ(light > before + 500'000, image % kImagesPerSecond == 0) << image;
        }
        before = light;
    }
}

TEST_F(DemoFilm, BellStrikesAtEveryFullSecond) {
    AudioFilekel sound;
    ASSERT_TRUE(sound.OpenForRead(Path("demo.kva").c_str()));
    std::vector<int> samples;
    int number = 0;
    std::uint32_t time = 0;
    while (sound.ReadNextAudioFrame(number, time)) {
        const ByteView frame = sound.FrameData();
        for (std::size_t i = 0; i + 1 < frame.size(); i += 2)
            samples.push_back(static_cast<std::int16_t>(frame[i] | frame[i + 1] << 8));
    }
    ASSERT_EQ(samples.size(), std::size_t{kSampleRate} * kSeconds);
    constexpr int kLoud = 4000;
    constexpr int kTolerance = kSampleRate / 500; // 2 ms
    for (int second = 0; second < kSeconds; ++second) {
        const auto start = samples.begin() + second * kSampleRate;
        const auto is_loud = [](int sample) { return std::abs(sample) > kLoud; };
        const auto onset = std::find_if(start, start + kSampleRate, is_loud) - start;
        EXPECT_LT(onset, kTolerance) << second;
        // Silence again before the next stroke.
        const auto quiet = start + kSampleRate - kSampleRate / 10;
        EXPECT_TRUE(std::none_of(quiet, start + kSampleRate - kTolerance, is_loud)) << second;
    }
}

TEST(DemoFilmMaker, SaysWhatIsWrong) {
    EXPECT_EQ(RunProgram(DEMO_FILM, {}).code, 2);
    const ToolResult result = RunProgram(DEMO_FILM, {"/nowhere/at/all/demo.kva"});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.messages, testing::StartsWith("demo_film: "));
}

} // namespace

} // namespace kelvo::test
