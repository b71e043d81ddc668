// Cutting and joining: which records are copied, what is coded anew, and that pictures and sound
// stay in step.

#include "tests/tools/kelvotool/ToolRun.h"

#include "media/AudioFilekel.h"
#include "media/FilmFile.h"
#include "media/VideoFilekel.h"

#include <gmock/gmock.h>

#include <random>

namespace kelvo::test {

namespace {

using testing::HasSubstr;

constexpr int kImages = 50;
constexpr int kKeyInterval = 10;

class Cut : public ToolTest {
protected:
    /// Images of 8 x 4 that change a little each time, 10 a second, tied to 5 audio frames a
    /// second.
    std::string MakePicture(const std::string& name, int type, unsigned seed, int width = 8,
                            std::uint32_t sync = 0) const {
        const auto headers = BuildBitmapHeaders(width, 4, 16);
        Bytes pixels(static_cast<std::size_t>(width) * 4 * 2);
        std::mt19937 random(seed);
        VideoFilekel track;
        EXPECT_TRUE(track.Create(Path(name).c_str(), static_cast<std::uint32_t>(headers.size()),
                                 static_cast<std::uint32_t>(pixels.size()), type, 10,
                                 type < 7 ? 999999 : kKeyInterval, false));
        EXPECT_TRUE(track.WriteVideoHeader(headers));
        for (std::uint32_t n = 0; n < kImages; ++n) {
            pixels[random() % pixels.size()] = static_cast<std::uint8_t>(random() & 0x7FU);
            EXPECT_TRUE(track.AppendFrame(pixels, sync == 0 ? n / 2 : sync, 0));
        }
        EXPECT_TRUE(track.Close());
        return Path(name);
    }
    std::string MakeSound(const std::string& name, int frames, unsigned seed) const {
        AudioFilekel track;
        EXPECT_TRUE(track.Create(Path(name).c_str(), 16, 500, 1, 5));
        std::mt19937 random(seed);
        Bytes samples(100);
        for (int n = 0; n < frames; ++n) {
            for (std::uint8_t& sample : samples)
                sample = static_cast<std::uint8_t>(random());
            EXPECT_TRUE(track.AppendAudioFrame(samples, 0));
        }
        EXPECT_TRUE(track.Close());
        return Path(name);
    }
    std::string MakeFilm(const std::string& name, int type, int sound_frames, unsigned seed) const {
        const std::string picture = MakePicture("p.kvf", type, seed);
        const std::string sound = MakeSound("s.kaf", sound_frames, seed);
        EXPECT_EQ(
            WriteFilmFile(Path(name).c_str(), sound.c_str(), picture.c_str(), Existing::Replace)
                .fault,
            Fault::None);
        return Path(name);
    }
    static std::vector<std::string> Hashes(const std::string& file, const std::string& track) {
        std::vector<std::string> hashes;
        for (const auto& [hash, side] : Contents(file, track))
            hashes.push_back(hash);
        return hashes;
    }
    static std::vector<std::string> Slice(const std::vector<std::string>& all, std::size_t first,
                                          std::size_t end) {
        return {all.begin() + static_cast<std::ptrdiff_t>(first),
                all.begin() + static_cast<std::ptrdiff_t>(end)};
    }
    /// The SyncNumbers of a picture.
    static std::vector<std::uint32_t> SyncNumbers(const std::string& file) {
        std::vector<std::uint32_t> numbers;
        for (const auto& [hash, side] : Contents(file, "video")) {
            std::uint32_t number = 0;
            for (int i = 3; i >= 0; --i)
                number = number << 8U |
                         static_cast<std::uint32_t>(std::stoul(
                             side.substr(static_cast<std::size_t>(2 * i), 2), nullptr, 16));
            numbers.push_back(number);
        }
        return numbers;
    }
    static nlohmann::json Json(const ToolResult& result) {
        return nlohmann::json::parse(result.output, nullptr, false);
    }
};

TEST_F(Cut, EveryTypeKeepsItsImagesAndCodesAnewOnlyWhatItMust) {
    struct {
        int type;
        const char* range;
        std::size_t first, end;
        int coded_anew;
    } const rows[] = {
        {9, "13f-37f", 13, 37, 0}, {99, "1f-2f", 1, 2, 0},
        {8, "20f-45f", 20, 45, 0}, // the key records fall into their places
        {8, "13f-37f", 13, 37, 3}, // new ones at 0, 10 and 20
        {7, "4.9-", 49, 50, 1},    {5, "0f-20f", 0, 20, 0},
        {6, "7f-50f", 7, 50, 1},   {8, "3f-4f", 3, 4, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << " " << row.range);
        const std::string film = MakePicture("a.kvf", row.type, 1);
        const ToolResult result =
            RunTool({"cut", film, Path("b.kvf"), "--range", row.range, "-f", "--json"});
        ASSERT_EQ(result.code, 0) << result.messages;
        EXPECT_EQ(Json(result)["images_coded_anew"], row.coded_anew);
        EXPECT_EQ(Hashes(Path("b.kvf"), "video"), Slice(Hashes(film, "video"), row.first, row.end));
        const ToolResult verified = RunTool({"verify", Path("b.kvf"), "--strict"});
        EXPECT_EQ(verified.code, 0) << verified.messages;
    }
}

TEST_F(Cut, PicturesAndSoundStayInStep) {
    for (const int type : {6, 8, 9}) {
        SCOPED_TRACE(type);
        const std::string film = MakeFilm("a.kva", type, 25, 1);
        const ToolResult result =
            RunTool({"cut", film, Path("b.kva"), "--range", "11f-14f,30f-34f", "-f"});
        ASSERT_EQ(result.code, 0) << result.messages;
        const auto sound = Hashes(film, "audio");
        auto expected = Slice(sound, 5, 7); // the frames of images 11 to 13
        for (const std::string& frame : Slice(sound, 15, 17))
            expected.push_back(frame);
        EXPECT_EQ(Hashes(Path("b.kva"), "audio"), expected);
        EXPECT_EQ(SyncNumbers(Path("b.kva")), (std::vector<std::uint32_t>{0, 1, 1, 2, 2, 3, 3}));
        EXPECT_EQ(RunTool({"verify", Path("b.kva"), "--strict"}).code, 0);
    }
}

TEST_F(Cut, SoundAloneAndVorbisSoundAreCutAtTheirFrames) {
    const auto cut = [&](const std::string& from, const char* range) {
        const ToolResult result = RunTool({"cut", from, Path("b.kaf"), "--range", range, "-f"});
        EXPECT_EQ(result.code, 0) << result.messages;
        return result;
    };
    cut(Sample("screen.kaf"), "3f-9f");
    EXPECT_EQ(Hashes(Path("b.kaf"), "audio"), Slice(Hashes(Sample("screen.kaf"), "audio"), 3, 9));
    EXPECT_THAT(cut(Sample("bells.kaf"), "3f-9f").messages, HasSubstr("Vorbis"));
    EXPECT_EQ(Hashes(Path("b.kaf"), "audio"), Slice(Hashes(Sample("bells.kaf"), "audio"), 3, 9));
}

TEST_F(Cut, WhatMakesNoFilmIsRefusedAndLeavesNothing) {
    const std::string film = MakePicture("a.kvf", 8, 1);
    for (const char* range : {"60f-70f", "5f-5f", "x", "9f-3f", ""}) {
        SCOPED_TRACE(range);
        EXPECT_EQ(RunTool({"cut", film, Path("b.kvf"), "--range", range}).code, 2);
    }
    EXPECT_EQ(RunTool({"cut", film, Path("b.kva"), "--range", "0f-5f"}).code, 2);
    EXPECT_EQ(RunTool({"cut", film, film, "--range", "0f-5f", "-f"}).code, 2);
    EXPECT_EQ(RunTool({"cut", film, Path("b.kvf")}).code, 2);
    EXPECT_THAT(Names(), testing::ElementsAre("a.kvf"));
}

TEST_F(Cut, PartsThatAreJoinedAgainAreTheFilmTheyWere) {
    for (const int type : {5, 6, 7, 8, 9, 99}) {
        SCOPED_TRACE(type);
        const std::string film = MakeFilm("a.kva", type, 25, 1);
        ASSERT_EQ(RunTool({"cut", film, Path("1.kva"), "--range", "-24f", "-f"}).code, 0);
        ASSERT_EQ(RunTool({"cut", film, Path("2.kva"), "--range", "24f-", "-f"}).code, 0);
        const ToolResult joined =
            RunTool({"join", Path("1.kva"), Path("2.kva"), "-o", Path("b.kva"), "-f"});
        ASSERT_EQ(joined.code, 0) << joined.messages;
        EXPECT_EQ(Contents(Path("b.kva"), "video"), Contents(film, "video"));
        EXPECT_EQ(Contents(Path("b.kva"), "audio"), Contents(film, "audio"));
        EXPECT_EQ(RunTool({"verify", Path("b.kva"), "--strict"}).code, 0);
    }
}

TEST_F(Cut, JoiningFillsOrCutsSoundSoThatTheNextFilmIsInStep) {
    const std::string second = MakeFilm("2.kva", 8, 25, 2);
    const auto sound = Hashes(second, "audio");
    struct {
        int frames;
        int code;
        const char* message;
    } const rows[] = {{20, 0, "5 frames of silence"}, {28, 1, "its last 3 audio frames"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message);
        const std::string first = MakeFilm("1.kva", 9, row.frames, 1);
        const ToolResult joined = RunTool({"join", first, second, "-o", Path("b.kva"), "-f"});
        EXPECT_EQ(joined.code, row.code);
        EXPECT_THAT(joined.messages, HasSubstr(row.message));
        const auto all = Hashes(Path("b.kva"), "audio");
        ASSERT_EQ(all.size(), 50U);
        EXPECT_EQ(Slice(all, 25, 50), sound);
        EXPECT_EQ(SyncNumbers(Path("b.kva")).at(50), 25U);
        EXPECT_EQ(Slice(Hashes(Path("b.kva"), "video"), 50, 100), Hashes(second, "video"));
        EXPECT_EQ(RunTool({"verify", Path("b.kva"), "--strict"}).code, 0);
    }
}

TEST_F(Cut, WhatDoesNotFitIsNotJoined) {
    const std::string picture = MakePicture("a.kvf", 8, 1);
    const std::string wide = MakePicture("w.kvf", 8, 1, 16);
    const std::string untied = MakePicture("u.kvf", 8, 1, 8, kNeverLinked);
    const std::string sound = MakeSound("s.kaf", 5, 1);
    struct {
        std::vector<std::string> films;
        const char* reason;
    } const rows[] = {
        {{picture, wide}, "16 x 4"},
        {{picture, untied}, "tied"},
        {{picture, sound}, "no picture"},
        {{sound, Sample("bells.kaf")}, "44100"},
        {{picture}, "FILM"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        std::vector<std::string> arguments{"join"};
        arguments.insert(arguments.end(), row.films.begin(), row.films.end());
        arguments.insert(arguments.end(), {"-o", Path("b.kvf")});
        const ToolResult result = RunTool(arguments);
        EXPECT_EQ(result.code, 2);
        EXPECT_THAT(result.messages, HasSubstr(row.reason));
    }
    EXPECT_EQ(RunTool({"join", picture, picture}).code, 2);
    EXPECT_THAT(Names(), testing::ElementsAre("a.kvf", "s.kaf", "u.kvf", "w.kvf"));
}

} // namespace

} // namespace kelvo::test
