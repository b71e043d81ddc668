// kelvotool-media encode: what is written is what came, a foreign program reads it, and a file is
// there whole or not at all.

#include "tests/tools/media/Streams.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

namespace kelvo::test {

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using namespace media_stream;

class Encoding : public ToolTest {};

struct LosslessCase {
    const char* file;
    std::vector<std::string> options;
    bool keeps_sound;
};

TEST_F(Encoding, LosslessFormatsGiveBackEveryPixelAndSample) {
    const LosslessCase cases[] = {
        {"film.mkv", {}, true},
        {"film.mkv", {"--preset", "archive"}, true},
        {"film.mp4", {"--preset", "archive"}, true},
        {"film.webm", {"--preset", "archive"}, false},
    };
    struct Shape {
        std::uint32_t width, height, rate, sample_rate;
    };
    for (const auto& [file, options, keeps_sound] : cases) {
        for (const Shape& shape :
             {Shape{160, 120, 10, 22050}, Shape{7, 5, 25, 8000}, Shape{67, 33, 15, 11127}}) {
            SCOPED_TRACE(std::string(file) + " " + std::to_string(shape.width));
            MediaStream film = TestFilm(shape.width, shape.height, 12, shape.rate);
            AddSound(film, shape.sample_rate, 12.0 / shape.rate);
            film.texts = {{"title", "Perché"}};
            std::vector<std::string> arguments = {Path(file), "--force"};
            arguments.insert(arguments.end(), options.begin(), options.end());
            const ToolResult written = Encode(*this, BytesOf(film), arguments);
            ASSERT_EQ(written.code, 0) << written.messages;
            const ToolResult read = Decode({Path(file)});
            ASSERT_EQ(read.code, 0) << read.messages;
            const MediaStream back = ParseStream(read.output);
            EXPECT_TRUE(back.has_end);
            EXPECT_EQ(back.picture->ticks_numerator, shape.rate);
            EXPECT_EQ(back.images.size(), film.images.size());
            EXPECT_TRUE(back.images == film.images) << "pixels or times differ";
            if (keeps_sound) {
                EXPECT_EQ(back.samples, film.samples);
                EXPECT_EQ(back.sound->sample_rate, shape.sample_rate);
            }
            bool has_title = false;
            for (const auto& [key, value] : back.texts)
                has_title = has_title || value == "Perché";
            EXPECT_TRUE(has_title);
        }
    }
}

TEST_F(Encoding, EveryColourOf555ComesOutOfTheArchiveExactly) {
    MediaStream film;
    film.picture = PictureFormat{256, 128, 5, 1, 5, 1};
    StreamImage image;
    for (std::uint32_t colour = 0; colour < 32768; ++colour) {
        for (const std::uint32_t bits : {colour >> 10U, colour >> 5U & 31U, colour & 31U})
            image.pixels.push_back(static_cast<std::uint8_t>(bits << 3U | bits >> 2U));
    }
    film.images.push_back(image);
    ASSERT_EQ(Encode(*this, BytesOf(film), {Path("colours.mkv")}).code, 0);
    const MediaStream back = ParseStream(Decode({Path("colours.mkv")}).output);
    ASSERT_EQ(back.images.size(), 1U);
    EXPECT_TRUE(back.images[0].pixels == image.pixels);
    EXPECT_EQ(back.picture->significant_bits, 5U);
    // A reader that shares no line with the writer sees the same.
    Ffmpeg({"-i", Path("colours.mkv"), "-f", "rawvideo", "-pix_fmt", "rgb24", Path("raw")});
    EXPECT_TRUE(ReadFile(Path("raw")) == image.pixels);
}

TEST_F(Encoding, ImagesKeepTheirUnevenTimes) {
    MediaStream film = TestFilm(16, 16, 4, 1000);
    const std::uint64_t starts[] = {0, 40, 1000, 1033};
    for (std::size_t n = 0; n < 4; ++n) {
        film.images[n].start = starts[n];
        film.images[n].duration =
            n < 3 ? static_cast<std::uint32_t>(starts[n + 1] - starts[n]) : 67;
    }
    ASSERT_EQ(Encode(*this, BytesOf(film), {Path("film.mkv")}).code, 0);
    const MediaStream back = ParseStream(Decode({Path("film.mkv")}).output);
    ASSERT_EQ(back.images.size(), 4U);
    for (std::size_t n = 0; n < 4; ++n) {
        EXPECT_EQ(back.images[n].start * 1000 / back.picture->ticks_numerator, starts[n]);
        EXPECT_TRUE(back.images[n].pixels == film.images[n].pixels);
    }
}

TEST_F(Encoding, ASoundAloneIsLosslessInFlac) {
    for (const std::uint32_t rate : {8000U, 11025U, 44100U, 80U}) {
        MediaStream sound;
        AddSound(sound, rate, 1.7);
        ASSERT_EQ(Encode(*this, BytesOf(sound), {Path("sound.flac"), "--force"}).code, 0) << rate;
        const ToolResult read = Decode({Path("sound.flac")});
        EXPECT_EQ(read.code, 0) << read.messages;
        EXPECT_EQ(ParseStream(read.output).samples, sound.samples);
    }
}

TEST_F(Encoding, SharedFilmsPlayElsewhereAndLookAlike) {
    MediaStream film = TestFilm(51, 33, 20, 10);
    AddSound(film, 11025, 2);
    struct SharedCase {
        const char* file;
        const char* picture;
        const char* sound;
    };
    for (const auto& [file, picture, sound] :
         {SharedCase{"film.mp4", "h264", "aac"}, SharedCase{"film.webm", "vp9", "opus"}}) {
        SCOPED_TRACE(file);
        const ToolResult written = Encode(*this, BytesOf(film), {Path(file), "--preset", "share"});
        ASSERT_EQ(written.code, 0) << written.messages;
        const ToolResult probe =
            RunProgram("/usr/bin/ffprobe", {"-v", "error", "-of", "csv=p=0", "-show_entries",
                                            "stream=codec_name,pix_fmt", Path(file)});
        EXPECT_EQ(probe.code, 0);
        EXPECT_EQ(probe.messages, "");
        EXPECT_THAT(probe.output, HasSubstr(picture));
        EXPECT_THAT(probe.output, HasSubstr("yuv420p"));
        EXPECT_THAT(probe.output, HasSubstr(sound));
        const ToolResult read = Decode({Path(file), "--size", "51x33", "--fps", "10"});
        EXPECT_EQ(read.code, 0) << read.messages;
        const MediaStream back = ParseStream(read.output);
        EXPECT_EQ(back.images.size(), film.images.size());
        EXPECT_NEAR(static_cast<double>(back.samples.size()) / back.sound->sample_rate, 2, 0.1);
    }
}

TEST_F(Encoding, AGifKeepsImagesOf256ColoursAndLeavesOutSound) {
    MediaStream film = TestFilm(16, 16, 6, 10);
    ASSERT_EQ(Encode(*this, BytesOf(film), {Path("film.gif")}).code, 0);
    const MediaStream back = ParseStream(Decode({Path("film.gif"), "--fps", "10"}).output);
    ASSERT_EQ(back.images.size(), 6U);
    EXPECT_TRUE(back.images == film.images);

    MediaStream colourful = TestFilm(64, 64, 2, 10);
    AddSound(colourful, 8000, 0.2);
    const ToolResult lossy = Encode(*this, BytesOf(colourful), {Path("film.gif"), "--force"});
    EXPECT_EQ(lossy.code, 1);
    EXPECT_THAT(lossy.messages, HasSubstr("the sound is left out"));
    EXPECT_THAT(lossy.messages, HasSubstr("more than 256 colours"));
    const MediaStream near = ParseStream(Decode({Path("film.gif"), "--fps", "10"}).output);
    ASSERT_EQ(near.images.size(), 2U);
    int furthest = 0;
    for (std::size_t i = 0; i < near.images[0].pixels.size(); ++i)
        furthest =
            std::max(furthest, std::abs(near.images[0].pixels[i] - colourful.images[0].pixels[i]));
    EXPECT_LT(furthest, 80);
}

TEST_F(Encoding, AStreamThatIsNotWholeLeavesNothingBehind) {
    MediaStream film = TestFilm(16, 16, 8, 10);
    AddSound(film, 8000, 0.8);
    const Bytes whole = BytesOf(film);
    for (const std::size_t length : {std::size_t{0}, std::size_t{5}, std::size_t{30},
                                     std::size_t{100}, whole.size() / 2, whole.size() - 8}) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const ToolResult result = Encode(*this, cut, {Path("film.mkv")});
        EXPECT_EQ(result.code, 2) << length;
        EXPECT_THAT(result.messages, StartsWith("kelvotool: " + Path("film.mkv") + ": "));
        EXPECT_EQ(Names(), std::vector<std::string>{"stream"}) << length;
    }
    // Claims that must not be believed: each number of the description, as large as it can be.
    for (std::size_t offset = 4; offset + 4 <= 90; ++offset) {
        Bytes hostile = whole;
        for (std::size_t i = 0; i < 4; ++i)
            hostile[offset + i] = 0xFF;
        const ToolResult result = Encode(*this, hostile, {Path("film.mkv")});
        EXPECT_TRUE(result.code == 2 || result.code == 0) << offset << " " << result.code;
        std::filesystem::remove(Path("film.mkv"));
        EXPECT_EQ(Names(), std::vector<std::string>{"stream"}) << offset;
    }
}

TEST_F(Encoding, AnEarlierOutputStaysUntilANewOneIsWhole) {
    MediaStream film = TestFilm(160, 120, 20, 10);
    AddSound(film, 44100, 2);
    const Bytes stream = BytesOf(film);
    const Bytes earlier = {'o', 'l', 'd'};
    WriteFile(Path("film.mkv"), earlier);
    EXPECT_EQ(Encode(*this, stream, {Path("film.mkv")}).code, 2);
    const ToolResult full =
        Encode(*this, stream, {Path("film.mkv"), "--force"}, {.largest_file = 20000});
    EXPECT_EQ(full.code, 2);
    EXPECT_THAT(full.messages, HasSubstr("it cannot be written"));
    EXPECT_EQ(Encode(*this, {}, {Path("film.mkv"), "--force"}).code, 2);
    EXPECT_TRUE(ReadFile(Path("film.mkv")) == earlier);
    EXPECT_EQ(Names(), (std::vector<std::string>{"film.mkv", "stream"}));
    EXPECT_EQ(Encode(*this, stream, {Path("film.mkv"), "--force"}).code, 0);
    EXPECT_GT(ReadFile(Path("film.mkv")).size(), 1000U);
    EXPECT_EQ(Encode(*this, stream, {Path("no such folder/film.mkv")}).code, 2);
    EXPECT_EQ(Encode(*this, stream, {Path("film.doc")}).code, 2);
}

TEST_F(Encoding, ASignalStopsItAndTakesTheTemporaryAway) {
    // Standard input that never ends.
    const Bytes stream = BytesOf(TestFilm(16, 16, 8, 10));
    WriteFile(Path("half"), Bytes(stream.begin(), stream.end() - 8));
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
    for (const auto& [signal, code] : {std::pair{SIGINT, 130}, std::pair{SIGTERM, 143}}) {
        const auto stop = [&, signal = signal](pid_t child) {
            // The program has begun once its temporary is there.
            for (int i = 0; i < 2000 && !std::filesystem::exists(Path("film.mkv.tmp")); ++i)
                ::usleep(5000);
            ::kill(child, signal);
        };
        const std::string line = "exec 3<>" + Path("pipe") + "; cat " + Path("half") +
                                 " >&3; exec " KELVOTOOL_MEDIA " encode " + Path("film.mkv") +
                                 " <&3 3<&-";
        const ToolResult result = RunProgram("/bin/sh", {"-c", line}, {.meanwhile = stop});
        EXPECT_EQ(result.code, code) << result.messages;
        EXPECT_EQ(Names(), (std::vector<std::string>{"half", "pipe"}));
    }
}

} // namespace

} // namespace kelvo::test
