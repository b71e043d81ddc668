// What a name on the command line opens: the window, its title and size, its picture and its sound.

#include "tests/e2e/StageForTests.h"

#include "media/AudioFilekel.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <vector>

namespace kelvo::test {
namespace {

constexpr char kSamples[] = KELVO_SOURCE_DIR "/tests/samples/";

class Opening : public OnStage {
protected:
    static std::uint32_t PixelAt(const Area& area, int x, int y) {
        return TheStage().Screen().Pixel(area.x + x, area.y + y);
    }
};

TEST_F(Opening, ShowsTheFilmFrameExactAtTheTopLeftAboveTheOthers) {
    // Image 0 has no bit set: the upper half is black, the lower one white.
    Player player(TheStage(), {Film("clip.kva", {.images_per_second = 1, .seconds = 30})});
    ASSERT_TRUE(player.WaitForTitle("Kelvo - clip")) << player.Process().Errors();
    const auto picture = player.WaitForPicture(kCodedWidth, kCodedHeight);
    ASSERT_TRUE(picture);
    ASSERT_TRUE(WaitForAnyImage(player));
    EXPECT_EQ(PixelAt(*picture, 0, 0), 0U);
    EXPECT_EQ(PixelAt(*picture, kCodedWidth - 1, 0), 0U);
    EXPECT_NE(PixelAt(*picture, 0, -1), 0U); // the view's edge
    EXPECT_EQ(PixelAt(*picture, 0, kCodedHeight / 2 - 1), 0U);
    EXPECT_EQ(PixelAt(*picture, 0, kCodedHeight / 2), 0xFFFFFFU);
    EXPECT_EQ(PixelAt(*picture, kCodedWidth - 1, kCodedHeight - 1), 0xFFFFFFU);
    // The strip above the picture is light grey, and the menu above it has no place in it.
    EXPECT_EQ(PixelAt(*picture, 167, -3), PixelAt(*picture, 167, -23)); // behind the buttons
    EXPECT_TRUE(WaitUntil(
        [&] { return TheStage().Screen().HasState(player.Window(), "_NET_WM_STATE_ABOVE"); }));
    player.AskToClose();
    EXPECT_EQ(player.WaitForExit(), ExitStatus{.code = 0});
    EXPECT_EQ(player.Process().Errors(), "");
}

struct NameCase {
    const char* what;
    const char* file;  ///< in the test's folder
    const char* typed; ///< as the player gets it, started in that folder
    const char* title;
};
class Names : public Opening, public testing::WithParamInterface<NameCase> {};
const NameCase kNames[] = {
    {"WithSpaces", "il mio  film.kva", "il mio  film.kva", "Kelvo - il mio  film"},
    {"WithAccents", "perché è così.kva", "perché è così.kva", "Kelvo - perché è così"},
    {"WithQuotes", "\"l'altro\".kva", "\"l'altro\".kva", "Kelvo - \"l'altro\""},
    {"WithALeadingDash", "-style.kva", "-style.kva", "Kelvo - -style"},
    {"RelativeWithFolders", "clip.kva", "./../%/clip.kva", "Kelvo - clip"},
    {"InOtherCase", "film.kva", "FILM.KVA", "Kelvo - film"},
    {"WithADotInside", "film.1.kva", "film.1.kva", "Kelvo - film.1"},
};
TEST_P(Names, Open) {
    const std::string name = Film(GetParam().file, {.seconds = 5});
    std::string typed = GetParam().typed;
    if (const auto at = typed.find('%'); at != std::string::npos) {
        typed.replace(at, 1, std::filesystem::path(folder_.Path()).filename().string());
    }
    Player player(TheStage(), {typed}, {}, folder_.Path());
    EXPECT_TRUE(player.WaitForTitle(GetParam().title)) << player.Title();
    EXPECT_TRUE(WaitForAnyImage(player));
    EXPECT_TRUE(player.Boxes().empty());
    player.AskToClose();
    EXPECT_EQ(player.WaitForExit(), ExitStatus{.code = 0});
}
INSTANTIATE_TEST_SUITE_P(All, Names, testing::ValuesIn(kNames),
                         [](const auto& test) { return std::string(test.param.what); });

TEST_F(Opening, JoinsWhatTheShellHasSplit) {
    Film("due parole.kva", {.seconds = 5});
    Player player(TheStage(), {"due", "parole.kva"}, {}, folder_.Path());
    EXPECT_TRUE(player.WaitForTitle("Kelvo - due parole")) << player.Title();
}

TEST_F(Opening, FindsThePairByEitherOfItsNames) {
    const CodedFilmPlan plan{.seconds = 5};
    ASSERT_EQ(MakeCodedPair(folder_.File("pair"), plan).value_or(""), "");
    for (const char* typed : {"pair.kvf", "pair.kaf"}) {
        Recorder recorder(TheStage().Sound());
        Player player(TheStage(), {folder_.File(typed)});
        EXPECT_TRUE(player.WaitForTitle("Kelvo - pair")) << typed;
        EXPECT_TRUE(WaitForAnyImage(player)) << typed;
        EXPECT_TRUE(WaitUntil([&] { return HeardFrames(recorder.SoFar()).size() > 2; })) << typed;
        player.AskToClose();
        player.WaitForExit();
    }
}

TEST_F(Opening, NamesTheTrackThatIsMissing) {
    const CodedFilmPlan plan{.seconds = 5};
    ASSERT_EQ(MakeCodedPair(folder_.File("pair"), plan).value_or(""), "");
    std::filesystem::remove(folder_.File("pair.kaf"));
    {
        Player player(TheStage(), {folder_.File("pair.kvf")});
        EXPECT_TRUE(player.WaitForTitle("Kelvo (No Audio) - pair"));
        EXPECT_TRUE(WaitForAnyImage(player));
        EXPECT_TRUE(player.Boxes().empty());
    }
    // Sound alone, in a window of its own width.
    Player player(TheStage(), {std::string(kSamples) + "screen.kaf"});
    EXPECT_TRUE(player.WaitForTitle("Kelvo (No Video) - screen"));
    constexpr int kFrame = 8; // of 400
    EXPECT_TRUE(WaitUntil([&] { return player.Geometry().width == 400 - kFrame; }));
    EXPECT_TRUE(WaitUntil([] { return TheStage().Sound().PlayingStreams() == 1; }));
    EXPECT_TRUE(player.Boxes().empty());
}

TEST_F(Opening, PlaysADamagedFilmAsFarAsItGoesAfterOneBox) {
    Player player(TheStage(), {std::string(kSamples) + "cut.kva"});
    ASSERT_TRUE(player.WaitForBox("ATTENZIONE"));
    ASSERT_TRUE(player.AnswerBox());
    EXPECT_TRUE(player.WaitForTitle("Kelvo - cut"));
    const auto picture = player.WaitForPicture(160, 120);
    ASSERT_TRUE(picture);
    // Its rectangles move over a dark ground: the pictures that are left show more than one state.
    const auto row = [&] {
        std::vector<std::uint32_t> pixels;
        for (int x = 0; x < picture->width; ++x)
            pixels.push_back(PixelAt(*picture, x, picture->height / 2));
        return pixels;
    };
    std::set<std::vector<std::uint32_t>> seen;
    EXPECT_TRUE(WaitUntil([&] { return seen.insert(row()).second && seen.size() >= 4; }));
    EXPECT_TRUE(player.Boxes().empty());
}

TEST_F(Opening, SaysInTwoBoxesWhatDoesNotOpenAndStays) {
    std::ofstream(folder_.File("no film.kva")) << "this is no film";
    for (const char* name : {"no film.kva", "not there.kva"}) {
        Player player(TheStage(), {folder_.File(name)});
        ASSERT_TRUE(player.WaitForBox("ERRORE")) << name;
        ASSERT_TRUE(player.AnswerBox());
        ASSERT_TRUE(player.WaitForBox("Impossibile aprire il file!")) << name;
        ASSERT_TRUE(player.AnswerBox());
        EXPECT_EQ(player.Title(), "Kelvo");
        EXPECT_TRUE(player.Process().IsRunning());
        player.AskToClose();
        EXPECT_EQ(player.WaitForExit(), ExitStatus{.code = 0});
    }
}

// --- what is heard -----------------------------------------------------------------------------

/// The sound of a track, -1 to 1, at the recorder's rate.
std::vector<float> Decoded(const std::string& name) {
    AudioFilekel track;
    std::vector<float> samples;
    if (!track.OpenForRead(CString(name.c_str()))) return samples;
    int number = 0;
    std::uint32_t capture_time = 0;
    while (track.ReadNextAudioFrame(number, capture_time)) {
        const ByteView frame = track.FrameData();
        for (std::size_t i = 0; i + track.BytesPerSample() <= frame.size();
             i += track.BytesPerSample()) {
            samples.push_back(track.BytesPerSample() == 1
                                  ? static_cast<float>(frame[i] - 128) / 128
                                  : static_cast<float>(
                                        static_cast<std::int16_t>(frame[i] | (frame[i + 1] << 8))) /
                                        32768);
        }
    }
    const double step = static_cast<double>(track.SampleRate()) / SoundServer::kRate;
    std::vector<float> converted;
    for (double at = 0; at + 1 < static_cast<double>(samples.size()); at += step) {
        const auto left = static_cast<std::size_t>(at);
        const auto part = static_cast<float>(at - static_cast<double>(left));
        converted.push_back(samples[left] * (1 - part) + samples[left + 1] * part);
    }
    return converted;
}

/// How alike two stretches are: 1 for the same but for their loudness.
double Likeness(const float* a, const float* b, std::size_t count) {
    double both = 0;
    double of_a = 0;
    double of_b = 0;
    for (std::size_t i = 0; i < count; ++i) {
        both += double{a[i]} * b[i];
        of_a += double{a[i]} * a[i];
        of_b += double{b[i]} * b[i];
    }
    return of_a > 0 && of_b > 0 ? both / std::sqrt(of_a * of_b) : 0;
}

TEST_F(Opening, IsHeardAsItDecodes) {
    const std::string name = std::string(kSamples) + "screen.kaf";
    const std::vector<float> expected = Decoded(name);
    ASSERT_GT(expected.size(), 2U * SoundServer::kRate);
    Recorder recorder(TheStage().Sound());
    Player player(TheStage(), {name});
    ASSERT_TRUE(player.WaitForTitle("Kelvo (No Video) - screen"));
    ASSERT_TRUE(WaitUntil(
        [&] { return recorder.SoFar().samples.size() > SoundServer::kRate * std::size_t{5}; }));
    const Recording recording = recorder.SoFar();
    const Recording decoded{.samples = expected, .blocks = {}};
    constexpr float kLoud = 0.02F;
    const std::size_t heard_start = recording.FirstLoud(0, kLoud);
    const std::size_t decoded_start = decoded.FirstLoud(0, kLoud);
    // A machine under load tears gaps into the sound: the stretches between them are as they were,
    // only later.
    constexpr std::size_t kStretch = SoundServer::kRate / 5;
    constexpr std::size_t kAround = SoundServer::kRate / 12;
    int alike = 0;
    std::string all;
    for (std::size_t stretch = 1; stretch <= 5; ++stretch) {
        const std::size_t after = stretch * SoundServer::kRate * 3 / 10;
        double best = 0;
        for (std::size_t at = heard_start + after - kAround; at < heard_start + after + kAround;
             ++at) {
            ASSERT_LT(at + kStretch, recording.samples.size());
            best = std::max(best, Likeness(recording.samples.data() + at,
                                           expected.data() + decoded_start + after, kStretch));
        }
        all += " " + std::to_string(best);
        if (best > 0.95) ++alike;
    }
    EXPECT_GE(alike, 2) << all;
}

} // namespace
} // namespace kelvo::test
