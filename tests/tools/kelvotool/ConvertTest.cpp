// Changing the type of tracks and films, what is refused, and what is left of an output when it
// cannot be finished.

#include "tests/tools/kelvotool/ToolRun.h"

#include "media/FilmFile.h"
#include "media/VideoFilekel.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

namespace kelvo::test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Convert : public ToolTest {
protected:
    /// A film of the two small samples.
    std::string MakeFilm(const std::string& name, const char* sound) const {
        const std::string film = Path(name);
        EXPECT_EQ(
            WriteFilmFile(film.c_str(), Sample(sound).c_str(), Sample("square.kvf").c_str()).fault,
            Fault::None);
        return film;
    }
    /// Noise, which takes a while to code.
    std::string MakeLongPicture(const std::string& name) const {
        constexpr int kImages = 60;
        const auto headers = BuildBitmapHeaders(640, 480, 16);
        Bytes pixels(std::size_t{640} * 480 * 2);
        std::mt19937 random(1);
        for (std::uint8_t& byte : pixels)
            byte = static_cast<std::uint8_t>(random() & 0x7FU);
        VideoFilekel track;
        const std::string file = Path(name);
        EXPECT_TRUE(track.Create(file.c_str(), static_cast<std::uint32_t>(headers.size()),
                                 static_cast<std::uint32_t>(pixels.size()), 99, 25, 999999, false));
        EXPECT_TRUE(track.WriteVideoHeader(headers));
        for (int image = 0; image < kImages; ++image)
            EXPECT_TRUE(track.AppendFrame(pixels, 0, 0));
        EXPECT_TRUE(track.Close());
        return file;
    }
};

TEST_F(Convert, EveryLosslessTypeKeepsEveryRecordAndSideBlock) {
    const auto picture = Contents(Sample("square.kvf"), "video");
    for (const char* type : {"1", "2", "3", "4", "5", "6", "7", "8", "9", "16", "17", "18", "99"}) {
        SCOPED_TRACE(type);
        const ToolResult result =
            RunTool({"convert", Sample("square.kvf"), Path("a.kvf"), "--type", type, "-f"});
        EXPECT_EQ(result.code, 0) << result.messages;
        EXPECT_EQ(Contents(Path("a.kvf"), "video"), picture);
        EXPECT_EQ(RunTool({"verify", Path("a.kvf")}).code, 0);
    }
    const auto sound = Contents(Sample("screen.kaf"), "audio");
    for (const char* type : {"15", "16", "17", "18", "99"}) {
        SCOPED_TRACE(type);
        ASSERT_EQ(
            RunTool({"convert", Sample("screen.kaf"), Path("a.kaf"), "--type", type, "-f"}).code,
            0);
        EXPECT_EQ(Contents(Path("a.kaf"), "audio"), sound);
    }
}

TEST_F(Convert, ThereAndBackGivesTheSameBytes) {
    const std::string original = Sample("square.kvf");
    ASSERT_EQ(RunTool({"convert", original, Path("a.kvf"), "--type", "99"}).code, 0);
    ASSERT_EQ(RunTool({"convert", Path("a.kvf"), Path("b.kvf"), "--type", "8"}).code, 0);
    EXPECT_EQ(ReadFile(Path("b.kvf")), ReadFile(original));
    // A lossy type does not lose twice: its records are carried as they are.
    ASSERT_EQ(RunTool({"convert", Sample("screen.kaf"), Path("a.kaf"), "--type", "20"}).code, 0);
    EXPECT_EQ(ReadFile(Path("a.kaf")), ReadFile(Sample("screen.kaf")));
}

TEST_F(Convert, HeadersAreCarriedByteForByte) {
    Bytes bytes = ReadFile(Sample("square.kvf"));
    for (std::size_t i = 36; i < 1052; ++i)
        bytes[i] = static_cast<std::uint8_t>(i); // the reserved bytes
    for (std::size_t i = 1052; i < 1052 + 14; ++i)
        bytes[i] = static_cast<std::uint8_t>(i); // the bitmap's file header, which nobody reads
    WriteFile(Path("a.kvf"), bytes);
    ASSERT_EQ(
        RunTool({"convert", Path("a.kvf"), Path("b.kvf"), "--type", "9", "--key-interval", "7"})
            .code,
        0);
    const Bytes converted = ReadFile(Path("b.kvf"));
    EXPECT_TRUE(std::equal(bytes.begin() + 36, bytes.begin() + 1052 + 66, converted.begin() + 36));
    EXPECT_EQ(NumberAt(converted, 20), 9U);
    EXPECT_EQ(NumberAt(converted, 24), 7U);
}

TEST_F(Convert, FilmKeepsBothTracks) {
    const std::string film = MakeFilm("film.kva", "screen.kaf");
    const auto sound = Contents(film, "audio");
    const auto picture = Contents(film, "video");
    const std::vector<std::vector<std::string>> requests = {{"--type", "9"},
                                                            {"--type", "2", "--audio-type", "17"},
                                                            {"--audio-type", "15"},
                                                            {"--key-interval", "4"}};
    for (const auto& request : requests) {
        SCOPED_TRACE(request.front());
        std::vector<std::string> arguments{"convert", film, Path("new.kva"), "-f"};
        arguments.insert(arguments.end(), request.begin(), request.end());
        const ToolResult result = RunTool(arguments);
        ASSERT_EQ(result.code, 0) << result.messages;
        EXPECT_EQ(Contents(Path("new.kva"), "audio"), sound);
        EXPECT_EQ(Contents(Path("new.kva"), "video"), picture);
        const Bytes bytes = ReadFile(Path("new.kva"));
        EXPECT_EQ(NumberAt(bytes, 0), 16U);
        EXPECT_EQ(NumberAt(bytes, 4), NumberAt(bytes, 8));
        EXPECT_EQ(NumberAt(bytes, 12), bytes.size());
    }
    // Sound that nobody asked to change is not decoded: Vorbis comes through unharmed.
    const std::string vorbis = MakeFilm("vorbis.kva", "bells.kaf");
    ASSERT_EQ(RunTool({"convert", vorbis, Path("v.kva"), "--type", "9"}).code, 0);
    const Bytes bells = ReadFile(Sample("bells.kaf"));
    const Bytes converted = ReadFile(Path("v.kva"));
    EXPECT_TRUE(std::equal(bells.begin(), bells.end(), converted.begin() + 16));
}

TEST_F(Convert, VorbisSoundBecomesAContainerOfTheSameFrames) {
    ASSERT_EQ(RunTool({"convert", Sample("bells.kaf"), Path("a.kaf"), "--type", "16"}).code, 0);
    const auto vorbis = Contents(Sample("bells.kaf"), "audio");
    const auto container = Contents(Path("a.kaf"), "audio");
    ASSERT_EQ(container.size(), vorbis.size());
    for (std::size_t n = 0; n < vorbis.size(); ++n) {
        EXPECT_EQ(container[n].first, vorbis[n].first);
        EXPECT_EQ(container[n].second, std::string(64, '0'));
    }
}

TEST_F(Convert, TypesWithOneKeyRecordGetAnIntervalBeyondTheLastRecord) {
    ASSERT_EQ(RunTool({"convert", Sample("square.kvf"), Path("a.kvf"), "--type", "5"}).code, 0);
    EXPECT_GE(NumberAt(ReadFile(Path("a.kvf")), 24), 60U);
}

TEST_F(Convert, WhatWouldNotGiveTheSameTrackIsRefused) {
    const std::string long_samples = Path("wide.kaf"); // 16 bits
    ASSERT_EQ(RunTool({"convert", Sample("bells.kaf"), long_samples, "--type", "99"}).code, 0);
    const std::string film = MakeFilm("film.kva", "screen.kaf");
    const std::string two_channels = Path("two.kaf");
    Bytes bells = ReadFile(Sample("bells.kaf"));
    PutNumber(bells, 38, 2);
    for (const std::size_t frame_bytes : {std::size_t{50}, std::size_t{54} + 12}) {
        PutNumber(bells, frame_bytes, 2 * NumberAt(bells, frame_bytes));
    }
    WriteFile(two_channels, bells);
    struct {
        std::vector<std::string> arguments;
        const char* reason;
    } const rows[] = {
        {{two_channels, Path("o.kaf"), "--type", "16"}, "2 channels"},
        {{Sample("bells.kaf"), Path("o.kaf"), "--key-interval", "5"}, "needs a --type"},
        {{Sample("square.kvf"), Path("o.kvf"), "--type", "20"}, "for sound alone"},
        {{Sample("screen.kaf"), Path("o.kaf"), "--type", "8"}, "for pictures alone"},
        {{Sample("screen.kaf"), Path("o.kaf"), "--type", "69"}, "type 69"},
        {{Sample("screen.kaf"), Path("o.kaf"), "--type", "10"}, "there is no type 10"},
        {{long_samples, Path("o.kaf"), "--type", "30"}, "8-bit samples"},
        {{Sample("square.kvf"), Path("o.kvf"), "--type", "5", "--key-interval", "9"}, "key record"},
        {{Sample("square.kvf"), Path("o.kva"), "--type", "9"}, ".kva"},
        {{film, Path("o.kvf"), "--type", "9"}, ".kva"},
        {{Sample("square.kvf"), Path("o.kvf"), "--audio-type", "16"}, "no sound"},
        {{Sample("square.kvf"), Path("o.kvf")}, "--type"},
        {{Sample("square.kvf"), Path("o.kvf"), "--type", "9", "--key-interval", "0"}, "interval"},
        {{Sample("square.kvf"), Path("none/o.kvf"), "--type", "9"}, "folder"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        std::vector<std::string> arguments = row.arguments;
        arguments.insert(arguments.begin(), "convert");
        const ToolResult result = RunTool(arguments);
        EXPECT_EQ(result.code, 2);
        EXPECT_THAT(result.messages, HasSubstr(row.reason));
        EXPECT_THAT(Names(), ElementsAre("film.kva", "two.kaf", "wide.kaf"));
    }
}

TEST_F(Convert, PicturesOf24BitsKeepToTypesThatTakeBytes) {
    const auto headers = BuildBitmapHeaders(9, 5, 24);
    const Bytes pixels(std::size_t{28} * 5, 77);
    VideoFilekel track;
    ASSERT_TRUE(track.Create(Path("a.kvf").c_str(), static_cast<std::uint32_t>(headers.size()),
                             static_cast<std::uint32_t>(pixels.size()), 99, 25, 10, false));
    ASSERT_TRUE(track.WriteVideoHeader(headers) && track.AppendFrame(pixels, 1, 2));
    ASSERT_TRUE(track.Close());
    const ToolResult refused = RunTool({"convert", Path("a.kvf"), Path("b.kvf"), "--type", "9"});
    EXPECT_EQ(refused.code, 2);
    EXPECT_THAT(refused.messages, HasSubstr("16-bit pixels"));
    EXPECT_EQ(RunTool({"convert", Path("a.kvf"), Path("b.kvf"), "--type", "17"}).code, 0);
    EXPECT_EQ(Contents(Path("b.kvf"), "video"), Contents(Path("a.kvf"), "video"));
}

TEST_F(Convert, ExistingOutputIsReplacedOnlyByForce) {
    const std::string input = Copy("square.kvf", "in.kvf");
    const Bytes theirs{'t', 'h', 'e', 'i', 'r', 's'};
    WriteFile(Path("out.kvf"), theirs);
    const std::vector<std::string> request{"convert", input, Path("out.kvf"), "--type", "9"};
    EXPECT_EQ(RunTool(request).code, 2);
    EXPECT_EQ(ReadFile(Path("out.kvf")), theirs);
    std::vector<std::string> forced = request;
    forced.emplace_back("--force");
    EXPECT_EQ(RunTool(forced).code, 0);
    EXPECT_EQ(RunTool({"verify", Path("out.kvf")}).code, 0);
    // Never the input itself, by whatever name, nor what is no file.
    std::filesystem::create_hard_link(input, Path("link.kvf"));
    std::filesystem::create_symlink("in.kvf", Path("soft.kvf"));
    for (const std::string& output :
         {input, Path("link.kvf"), Path("soft.kvf"), Folder(), std::string("/dev/null")}) {
        EXPECT_EQ(RunTool({"convert", input, output, "--type", "9", "-f"}).code, 2) << output;
    }
    EXPECT_EQ(ReadFile(input), ReadFile(Sample("square.kvf")));
    // A user's own file of the temporary's name.
    WriteFile(Path("new.tmp"), theirs);
    EXPECT_EQ(RunTool({"convert", input, Path("new.kvf"), "--type", "9"}).code, 2);
    EXPECT_EQ(ReadFile(Path("new.tmp")), theirs);
}

TEST_F(Convert, FullDiskLeavesTheOldOutputAndNothingElse) {
    const std::string input = Copy("square.kvf", "in.kvf");
    const Bytes before = ReadFile(Sample("screen.kaf"));
    WriteFile(Path("out.kvf"), before);
    const ToolResult result = RunTool({"convert", input, Path("out.kvf"), "--type", "99", "-f"},
                                      {.largest_file = 300'000});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.messages, HasSubstr("kelvotool: " + Path("out.kvf") + ": "));
    EXPECT_EQ(ReadFile(Path("out.kvf")), before);
    EXPECT_THAT(Names(), ElementsAre("in.kvf", "out.kvf"));
    const ToolResult raw =
        RunTool({"frames", input, "--raw", Path("o.raw")}, {.largest_file = 300'000});
    EXPECT_EQ(raw.code, 2);
    const ToolResult rebuilt = [&] {
        Bytes bytes = ReadFile(input);
        PutNumber(bytes, NumberAt(bytes, 28), 0);
        WriteFile(Path("bad.kvf"), bytes);
        return RunTool({"rebuild", Path("bad.kvf")}, {.largest_file = 100'000});
    }();
    EXPECT_EQ(rebuilt.code, 2);
    EXPECT_THAT(Names(), ElementsAre("bad.kvf", "in.kvf", "out.kvf"));
}

TEST_F(Convert, SignalStopsItAndTakesTheTemporaryAway) {
    const std::string input = MakeLongPicture("in.kvf");
    for (const int signal_number : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signal_number);
        const auto stop_once_it_writes = [&](pid_t tool) {
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
            while (!std::filesystem::exists(Path("out.tmp")) &&
                   std::chrono::steady_clock::now() < deadline) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1)); // between two looks
            }
            ::kill(tool, signal_number);
        };
        const ToolResult result = RunTool({"convert", input, Path("out.kvf"), "--type", "9"},
                                          {.meanwhile = stop_once_it_writes});
        EXPECT_EQ(result.code, 128 + signal_number) << result.messages;
        EXPECT_THAT(Names(), ElementsAre("in.kvf"));
    }
}

TEST_F(Convert, DamagedRecordsComeAlongAndAreNamed) {
    Bytes bytes = ReadFile(Sample("square.kvf"));
    const std::uint32_t record = NumberAt(bytes, NumberAt(bytes, 28) + 59 * 4);
    std::fill_n(bytes.begin() + record + 4, NumberAt(bytes, record), std::uint8_t{0});
    WriteFile(Path("a.kvf"), bytes);
    const ToolResult result = RunTool({"convert", Path("a.kvf"), Path("b.kvf"), "--type", "9"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.messages, HasSubstr("(record 59, offset"));
    const auto records = Records(Path("b.kvf"), "video");
    const auto original = Records(Sample("square.kvf"), "video");
    ASSERT_EQ(records.size(), 60U);
    EXPECT_EQ(records.at(58).at("sha256"), original.at(58).at("sha256"));
}

} // namespace

} // namespace kelvo::test
