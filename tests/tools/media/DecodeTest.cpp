// kelvotool-media decode: foreign files as a stream, damaged and hostile ones included.

#include "tests/tools/media/Streams.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>

namespace kelvo::test {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Decoding : public ToolTest {
protected:
    /// A film of another program: 3 s, 96 x 64, 12 images a second, stereo sound.
    std::string Foreign(const std::string& name, std::vector<std::string> coding) {
        std::vector<std::string> words = {
            "-f",  "lavfi", "-i", "testsrc2=size=96x64:rate=12:duration=3",
            "-f",  "lavfi", "-i", "sine=frequency=440:sample_rate=44100:duration=3",
            "-ac", "2"};
        words.insert(words.end(), coding.begin(), coding.end());
        words.push_back(Path(name));
        Ffmpeg(words);
        return Path(name);
    }
};

TEST_F(Decoding, ReadsWhatOthersWroteAtTheSizeAndRatesAsked) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> films = {
        {"a.mp4", {"-c:v", "libx264", "-c:a", "aac"}},
        {"a.avi", {"-c:v", "mpeg4", "-c:a", "mp3"}},
        {"a.webm", {"-c:v", "libvpx", "-c:a", "libvorbis"}},
        {"a.nut", {"-c:v", "rawvideo", "-pix_fmt", "rgb555le", "-c:a", "pcm_u8"}},
    };
    for (const auto& [name, coding] : films) {
        SCOPED_TRACE(name);
        const std::string film = Foreign(name, coding);
        const ToolResult own = Decode({film});
        EXPECT_EQ(own.code, 0) << own.messages;
        const MediaStream stream = ParseStream(own.output);
        ASSERT_TRUE(stream.picture && stream.sound && stream.has_end);
        EXPECT_EQ(stream.picture->width, 96U);
        EXPECT_EQ(stream.picture->height, 64U);
        EXPECT_EQ(stream.sound->channels, 2U);
        EXPECT_EQ(stream.images.size(), 36U);
        EXPECT_NEAR(static_cast<double>(stream.samples.size()) / 2 / 44100, 3, 0.1);

        const ToolResult asked = Decode(
            {film, "--size", "48x30", "--fps", "24", "--sample-rate", "8000", "--channels", "1"});
        EXPECT_EQ(asked.code, 0) << asked.messages;
        const MediaStream other = ParseStream(asked.output);
        ASSERT_TRUE(other.picture && other.sound && other.has_end);
        EXPECT_EQ(other.picture->width, 48U);
        EXPECT_EQ(other.picture->height, 30U);
        EXPECT_NEAR(static_cast<double>(other.images.size()), 72, 2);
        for (std::size_t n = 0; n < other.images.size(); ++n)
            EXPECT_EQ(other.images[n].start, n);
        EXPECT_EQ(other.sound->channels, 1U);
        EXPECT_NEAR(static_cast<double>(other.samples.size()) / 8000, 3, 0.1);
    }
    EXPECT_FALSE(ParseStream(Decode({Path("a.mp4"), "--track", "audio"}).output).picture);
    EXPECT_FALSE(ParseStream(Decode({Path("a.mp4"), "--track", "video"}).output).sound);
    EXPECT_EQ(
        ParseStream(Decode({Path("a.nut"), "--track", "video"}).output).picture->significant_bits,
        5U);
}

TEST_F(Decoding, SoundThatBeginsLateBeginsWithSilence) {
    Ffmpeg({"-f", "lavfi", "-i", "testsrc2=size=32x32:rate=10:duration=2", "-itsoffset", "1", "-f",
            "lavfi", "-i", "sine=sample_rate=8000:duration=1", "-map", "0:v", "-map", "1:a", "-c:v",
            "ffv1", "-c:a", "pcm_s16le", Path("late.mkv")});
    const ToolResult result = Decode({Path("late.mkv")});
    EXPECT_EQ(result.code, 0) << result.messages;
    const MediaStream stream = ParseStream(result.output);
    ASSERT_NEAR(static_cast<double>(stream.samples.size()), 16000, 100);
    EXPECT_EQ(stream.samples[100], 0);
    EXPECT_EQ(stream.samples[7900], 0);
    int loudest = 0;
    for (std::size_t i = 8100; i < stream.samples.size(); ++i)
        loudest = std::max(loudest, std::abs(int{stream.samples[i]}));
    EXPECT_GT(loudest, 1000);
}

TEST_F(Decoding, APhonesUprightFilmStandsUpright) {
    Foreign("lying.mp4", {"-c:v", "libx264", "-an"});
    Ffmpeg({"-i", Path("lying.mp4"), "-c", "copy", "-metadata:s:v:0", "rotate=90",
            Path("upright.mp4")});
    const MediaStream lying = ParseStream(Decode({Path("lying.mp4")}).output);
    const MediaStream upright = ParseStream(Decode({Path("upright.mp4")}).output);
    ASSERT_FALSE(upright.images.empty());
    ASSERT_EQ(upright.picture->width, 64U);
    ASSERT_EQ(upright.picture->height, 96U);
    // A reader of the same kind turns it the same way.
    Ffmpeg({"-i", Path("upright.mp4"), "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", "rgb24",
            Path("raw")});
    const Bytes raw = ReadFile(Path("raw"));
    ASSERT_EQ(raw.size(), upright.images[0].pixels.size());
    double difference = 0;
    double difference_upside_down = 0;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        difference += std::abs(raw[i] - upright.images[0].pixels[i]);
        const std::size_t opposite = raw.size() - 3 - i / 3 * 3 + i % 3;
        difference_upside_down += std::abs(raw[opposite] - upright.images[0].pixels[i]);
    }
    // The two make colours of the halved planes in different ways.
    EXPECT_LT(difference / static_cast<double>(raw.size()), 10);
    EXPECT_GT(difference_upside_down / static_cast<double>(raw.size()), 30);
}

TEST_F(Decoding, WhatADamagedFileStillHoldsIsGivenAndTheRestSaid) {
    MediaStream film = TestFilm(64, 48, 40, 10);
    AddSound(film, 8000, 4);
    ASSERT_EQ(Encode(*this, BytesOf(film), {Path("film.mkv")}).code, 0);
    const Bytes whole = ReadFile(Path("film.mkv"));

    WriteFile(Path("cut.mkv"),
              Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2)));
    const ToolResult cut = Decode({Path("cut.mkv")});
    EXPECT_EQ(cut.code, 1) << cut.messages;
    EXPECT_THAT(cut.messages, StartsWith("kelvotool: " + Path("cut.mkv") + ": "));
    const MediaStream part = ParseStream(cut.output);
    EXPECT_TRUE(part.has_end);
    ASSERT_GT(part.images.size(), 5U);
    for (std::size_t n = 0; n < 5; ++n)
        EXPECT_TRUE(part.images[n] == film.images[n]) << n;

    // One that says in its head how long it is, and of which one track alone is asked for.
    const std::string fast =
        Foreign("fast.mp4", {"-c:v", "libx264", "-c:a", "aac", "-movflags", "+faststart"});
    const Bytes promised = ReadFile(fast);
    WriteFile(fast, Bytes(promised.begin(),
                          promised.begin() + static_cast<std::ptrdiff_t>(promised.size() / 2)));
    for (const char* track : {"audio", "video"})
        EXPECT_EQ(Decode({fast, "--track", track}).code, 1) << track;

    Bytes flipped = whole;
    flipped[whole.size() / 2] ^= 0x55;
    WriteFile(Path("flipped.mkv"), flipped);
    const ToolResult one = Decode({Path("flipped.mkv")});
    EXPECT_EQ(one.code, 1) << one.messages;
    const MediaStream most = ParseStream(one.output);
    std::size_t same = 0;
    for (const StreamImage& image : most.images)
        same += std::ranges::count(film.images, image) > 0 ? 1 : 0;
    EXPECT_GE(same + 3, film.images.size());
}

TEST_F(Decoding, HostileFilesEndInWordsAndWithinTheirMemory) {
    MediaStream film = TestFilm(32, 24, 10, 10);
    AddSound(film, 8000, 1);
    std::vector<std::string> films;
    for (const char* name : {"a.mkv", "a.mp4", "a.gif", "a.flac"}) {
        ASSERT_LE(Encode(*this, BytesOf(film), {Path(name)}).code, 1);
        films.push_back(Path(name));
    }
    std::minstd_rand random(3);
    for (const std::string& name : films) {
        const Bytes whole = ReadFile(name);
        for (int round = 0; round < 12; ++round) {
            Bytes hostile = whole;
            for (int i = 0; i < 1 << (round / 2); ++i)
                hostile[random() % std::min<std::size_t>(hostile.size(), 2000)] =
                    static_cast<std::uint8_t>(random());
            WriteFile(Path("hostile"), hostile);
            const ToolResult result =
                RunProgram("/bin/sh", {"-c", "ulimit -t 20; exec \"$@\" >\"$0\"", Path("out"),
                                       KELVOTOOL_MEDIA, "decode", Path("hostile")});
            EXPECT_LE(result.code, 2) << name << " round " << round << ": " << result.messages;
            EXPECT_EQ(result.code == 0, result.messages.empty());
        }
    }
    const ToolResult none = Decode({Path("none.mkv")});
    EXPECT_EQ(none.code, 2);
    EXPECT_EQ(none.messages, "kelvotool: " + Path("none.mkv") + ": there is no such file\n");
    WriteFile(Path("empty.mkv"), {});
    EXPECT_EQ(Decode({Path("empty.mkv")}).code, 2);
    EXPECT_EQ(Decode({Folder()}).code, 2);
}

TEST_F(Decoding, AFileMakesItOpenNoOther) {
    MediaStream film = TestFilm(32, 24, 3, 10);
    ASSERT_EQ(Encode(*this, BytesOf(film), {Path("secret.mkv")}).code, 0);
    const std::string lists[] = {
        "ffconcat version 1.0\nfile secret.mkv\n",
        "#EXTM3U\n#EXT-X-TARGETDURATION:5\n#EXTINF:5,\nsecret.mkv\n#EXT-X-ENDLIST\n",
        "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
        "m=video 9 RTP/AVP 96\na=rtpmap:96 H264/90000\n",
    };
    for (const std::string& list : lists) {
        WriteFile(Path("list"), Bytes(list.begin(), list.end()));
        const ToolResult result = RunProgram(KELVOTOOL_MEDIA, {"decode", "list"}, {Folder()});
        EXPECT_EQ(result.code, 2) << list;
        EXPECT_TRUE(ParseStream(result.output).images.empty());
    }
    // A name that looks like an address is a name.
    EXPECT_THAT(Decode({"concat:a.mkv|b.mkv"}).messages, HasSubstr("there is no such file"));
}

TEST_F(Decoding, AReaderThatGoesAwayAndAFullDiskAreSaid) {
    MediaStream film = TestFilm(160, 120, 40, 10);
    ASSERT_EQ(Encode(*this, BytesOf(film), {Path("film.mkv")}).code, 0);
    const ToolResult full =
        RunProgram(KELVOTOOL_MEDIA, {"decode", Path("film.mkv")}, {.output_file = "/dev/full"});
    EXPECT_EQ(full.code, 2);
    EXPECT_THAT(full.messages, HasSubstr("standard output: cannot be written"));
    for (const std::vector<std::string>& wrong :
         {std::vector<std::string>{Path("film.mkv"), "--size", "0x4"},
          {Path("film.mkv"), "--size", "40"},
          {Path("film.mkv"), "--fps", "-1"},
          {Path("film.mkv"), "--fps", "10/0"},
          {Path("film.mkv"), "--track", "smell"},
          {}})
        EXPECT_EQ(Decode(wrong).code, 2);
}

} // namespace

} // namespace kelvo::test
