// The demo film, by which anyone sees and hears at once whether picture and sound agree: its clock
// on the screen against its bell in the recording.

#include "tests/e2e/ExpectInStep.h"
#include "tests/e2e/StageForTests.h"
#include "tests/e2e/SyncMeasurement.h"

#include "media/VideoFilekel.h"

#include <atomic>
#include <cmath>
#include <cstdio>
#include <thread>
#include <unordered_map>

namespace kelvo::test {
namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;
constexpr int kEach = 3; ///< every third pixel in both directions tells the images apart
constexpr CodedFilmPlan kPlan{.audio_frames_per_second = 5, .images_per_second = 25, .seconds = 20};
constexpr int kImagesWatched = 200;

class Digest {
public:
    void Add(std::uint32_t pixel) { value_ = (value_ ^ pixel) * 0x100000001B3; }
    std::uint64_t Value() const { return value_; }

private:
    std::uint64_t value_ = 0xCBF29CE484222325;
};

std::uint32_t OnScreen(unsigned pixel) {
    const auto wide = [](unsigned five) { return (five << 3U) | (five >> 2U); };
    return (wide((pixel >> 10U) & 31U) << 16U) | (wide((pixel >> 5U) & 31U) << 8U) |
           wide(pixel & 31U);
}

/// Of every image of the film, as it must look on the screen.
std::unordered_map<std::uint64_t, int> DigestsOf(const std::string& film) {
    std::unordered_map<std::uint64_t, int> digests;
    VideoFilekel track;
    if (!track.OpenForRead(CString(film.c_str()))) return digests;
    FrameSide side;
    for (int image = 0; track.ReadNextFrame(side); ++image) {
        const std::uint8_t* bits = track.GetFrameBits();
        Digest digest;
        for (int y = 0; y < kHeight; y += kEach) {
            for (int x = 0; x < kWidth; x += kEach) {
                const int at = 2 * ((kHeight - 1 - y) * kWidth + x); // rows go from the bottom up
                digest.Add(OnScreen(bits[at] | (unsigned{bits[at + 1]} << 8U)));
            }
        }
        digests.emplace(digest.Value(), image);
    }
    return digests;
}

std::uint64_t DigestOnScreen(int left, int top) {
    Digest digest;
    for (int y = 0; y < kHeight; y += kEach) {
        for (int x = 0; x < kWidth; x += kEach) {
            digest.Add(TheStage().Screen().Pixel(left + x, top + y));
        }
    }
    return digest.Value();
}

/// The strokes of the bell, each as the audio frame that it begins.
std::vector<HeardFrame> Strokes(const Recording& recording) {
    constexpr float kStroke = 0.1F;
    constexpr auto kUntilQuiet = static_cast<std::size_t>(SoundServer::kRate * 8 / 10);
    std::vector<HeardFrame> strokes;
    for (std::size_t at = recording.FirstLoud(0, kStroke); at < recording.samples.size();
         at = recording.FirstLoud(at + kUntilQuiet, kStroke)) {
        strokes.push_back({static_cast<int>(strokes.size()) * kPlan.audio_frames_per_second,
                           recording.HeardAt(static_cast<double>(at))});
    }
    return strokes;
}

class DemoFilm : public OnStage {};

TEST_F(DemoFilm, StrikesItsBellAsItsHandReachesTheSecond) {
    const std::string film = folder_.File("demo.kva");
    ChildProcess maker({KELVO_DEMO_FILM, film}, {});
    ASSERT_EQ(maker.WaitForExit(std::chrono::minutes(2)), ExitStatus{.code = 0}) << maker.Errors();
    const auto digests = DigestsOf(film);
    ASSERT_EQ(digests.size(), static_cast<std::size_t>(kPlan.Images())); // no two are alike

    ExpectInStep(30, [&](Agreement& agreement) {
        Recorder recorder(TheStage().Sound());
        Player player(TheStage(), {film});
        if (!player.WaitForTitle("Kelvo - demo")) return std::string("the film did not open");
        const auto picture = player.WaitForPicture(kWidth, kHeight);
        if (!picture) return std::string("the window did not take the film's size");
        // The pointer is drawn into the frame buffer.
        TheStage().Screen().MoveTo(VirtualScreen::kWidth - 1, VirtualScreen::kHeight - 1);
        std::vector<SeenImage> seen;
        const auto deadline = Clock::now() + kPatience + std::chrono::seconds(10);
        while ((seen.empty() || seen.back().number < kImagesWatched) && Clock::now() < deadline) {
            const auto found = digests.find(DigestOnScreen(picture->x, picture->y));
            if (found != digests.end() && (seen.empty() || seen.back().number != found->second)) {
                seen.push_back({found->second, Clock::now()});
            }
            std::this_thread::sleep_for(std::chrono::microseconds(300));
        }
        player.AskToClose();
        if (player.WaitForExit() != ExitStatus{.code = 0}) {
            return std::string("the player did not end well");
        }
        if (seen.empty() || seen.back().number < kImagesWatched) {
            return std::string("the film was not seen to the end of the watch");
        }
        // Only the five images of a stroke's audio frame have a sound to be compared with.
        agreement = Compare(kPlan, seen, Strokes(recorder.Stop()));
        return std::string();
    });
}

} // namespace
} // namespace kelvo::test
