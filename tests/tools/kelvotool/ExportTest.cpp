// Films out and back: what other programs read of them, and that nothing is lost on the way.

#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

namespace kelvo::test {

namespace {

using testing::HasSubstr;

std::vector<std::string> Hashes(const std::string& file, const std::string& track) {
    std::vector<std::string> hashes;
    for (const auto& [hash, side] : Contents(file, track))
        hashes.push_back(hash);
    return hashes;
}

/// What ffprobe says of a file: the fields of its stream, one after the other.
std::string Probe(const std::string& file, const std::string& fields) {
    const ToolResult result =
        RunProgram("/usr/bin/ffprobe", {"-v", "error", "-count_frames", "-show_entries",
                                        "stream=" + fields, "-of", "csv=p=0", file});
    EXPECT_EQ(result.code, 0) << result.messages;
    EXPECT_EQ(result.messages, "");
    return result.output;
}

class Export : public ToolTest {
protected:
    /// Changes the words of the side blocks of a track that is stored with side blocks of 108.
    std::string WithSides(const std::vector<std::array<std::uint32_t, 2>>& sync_and_capture) const {
        const std::string file = Copy("square.kvf", "sides.kvf");
        EXPECT_EQ(RunTool({"convert", file, Path("raw.kvf"), "--type", "99"}).code, 0);
        Bytes bytes = ReadFile(Path("raw.kvf"));
        constexpr std::size_t kRecord = 4 + 128 * 96 * 2;
        for (std::size_t n = 0; n < sync_and_capture.size(); ++n) {
            const std::size_t side = 1052 + 66 + n * (kRecord + 108) + kRecord;
            PutNumber(bytes, side, sync_and_capture[n][0]);
            PutNumber(bytes, side + 8, sync_and_capture[n][1]);
        }
        WriteFile(Path("raw.kvf"), bytes);
        return Path("raw.kvf");
    }
};

TEST_F(Export, PicturesComeBackAsTheyWere) {
    const std::string film = Sample("square.kvf");
    const auto known = Hashes(film, "video");
    struct Way {
        std::string out;
        std::vector<std::string> options;
    };
    for (const Way& way : {Way{"f-%04d.png", {}}, Way{"b%d.bmp", {}}, Way{"film.y4m", {}},
                           Way{"folder", {"--format", "png"}}}) {
        const std::string out = Path(way.out);
        std::vector<std::string> arguments{"export", film, out};
        arguments.insert(arguments.end(), way.options.begin(), way.options.end());
        const ToolResult exported = RunTool(arguments);
        ASSERT_EQ(exported.code, 0) << exported.messages;
        EXPECT_EQ(RunTool(arguments).code, 2) << "nothing is replaced without being asked";
        const std::string back = Path("back.kvf");
        const ToolResult imported = RunTool({"import", out, back, "--fps", "10", "-f"});
        ASSERT_EQ(imported.code, 0) << imported.messages;
        EXPECT_EQ(Hashes(back, "video"), known) << way.out;
        EXPECT_EQ(RunTool({"verify", back}).code, 0);
    }
    EXPECT_EQ(Probe(Path("film.y4m"), "width,height,pix_fmt,nb_read_frames"),
              "128,96,yuv444p,60\n");
    const ToolResult checked =
        RunProgram("/usr/bin/pngcheck", {Path("f-0000.png"), Path("folder/000059.png")});
    EXPECT_EQ(checked.code, 0) << checked.output;
    EXPECT_EQ(Probe(Path("b7.bmp"), "width,height,pix_fmt"), "128,96,rgb555le\n");
    const auto names = Names();
    EXPECT_TRUE(
        std::ranges::none_of(names, [](const std::string& name) { return name.starts_with("."); }));
}

TEST_F(Export, PicturesOf24BitsComeBackToo) {
    const std::string film = Sample("square.kvf");
    ASSERT_EQ(RunTool({"export", film, Path("a%d.png"), "--range", "0f-3f"}).code, 0);
    for (const std::string kind : {"png", "bmp"}) {
        const std::string wide = Path(kind + ".kvf");
        ASSERT_EQ(
            RunTool({"import", Path("a%d.png"), wide, "--bits", "24", "--size", "33x21"}).code, 0);
        ASSERT_EQ(RunTool({"export", wide, Path(kind), "--format", kind}).code, 0);
        ASSERT_EQ(RunTool({"import", Path(kind), wide + "2.kvf", "--bits", "24"}).code, 0);
        EXPECT_EQ(Hashes(wide + "2.kvf", "video"), Hashes(wide, "video"));
    }
}

TEST_F(Export, SoundComesBackAsItWas) {
    for (const std::string name : {"screen.kaf", "bells.kaf"}) {
        const std::string out = Path(name + ".wav");
        const std::string back = Path("back-" + name);
        ASSERT_EQ(RunTool({"export", Sample(name), out}).code, 0);
        EXPECT_THAT(Probe(out, "codec_name"), HasSubstr("pcm_"));
        const bool is_short = name == "screen.kaf";
        ASSERT_EQ(RunTool({"import", out, back, "--audio-bits", is_short ? "8" : "16"}).code, 0);
        EXPECT_EQ(Hashes(back, "audio"), Hashes(Sample(name), "audio")) << name;
    }
    // The stream itself goes through unchanged.
    ASSERT_EQ(RunTool({"export", Sample("bells.kaf"), Path("b.ogg")}).code, 0);
    const Bytes film = ReadFile(Sample("bells.kaf"));
    EXPECT_EQ(ReadFile(Path("b.ogg")), Bytes(film.begin() + 88, film.end()));
    EXPECT_EQ(Probe(Path("b.ogg"), "codec_name,sample_rate"), "vorbis,44100\n");
    EXPECT_EQ(RunTool({"export", Sample("screen.kaf"), Path("s.ogg")}).code, 2);
}

TEST_F(Export, ASampleThatAWavFileOf8BitsCannotHoldComesBackAllTheSame) {
    Bytes wav = ReadFile(Sample("screen.kaf"));
    wav.assign({'R', 'I', 'F', 'F', 0,   0,   0,   0,   'W', 'A', 'V', 'E', 'f', 'm', 't', ' ',
                16,  0,   0,   0,   1,   0,   1,   0,   4,   0,   0,   0,   4,   0,   0,   0,
                1,   0,   8,   0,   'd', 'a', 't', 'a', 4,   0,   0,   0,   128, 1,   255, 129});
    WriteFile(Path("a.wav"), wav);
    ASSERT_EQ(RunTool({"import", Path("a.wav"), Path("a.kaf"), "--audio-type", "99",
                       "--audio-frames", "1"})
                  .code,
              0);
    Bytes track = ReadFile(Path("a.kaf"));
    const std::size_t samples = 1052 + 34 + 4;
    EXPECT_EQ(Bytes(track.begin() + samples, track.begin() + samples + 4),
              (Bytes{127, 0, 254, 128}));
    ASSERT_EQ(RunTool({"export", Path("a.kaf"), Path("b.wav")}).code, 0);
    const Bytes back = ReadFile(Path("b.wav"));
    EXPECT_EQ(Bytes(back.begin() + 44, back.end()), (Bytes{128, 1, 255, 129}));
    track[samples] = 255;
    WriteFile(Path("c.kaf"), track);
    ASSERT_EQ(RunTool({"export", Path("c.kaf"), Path("c.wav")}).code, 0);
    EXPECT_EQ(ReadFile(Path("c.wav")).size(), 44U + 8U);
    ASSERT_EQ(RunTool({"import", Path("c.wav"), Path("d.kaf"), "--audio-bits", "8", "--audio-type",
                       "99", "--audio-frames", "1"})
                  .code,
              0);
    EXPECT_EQ(Hashes(Path("d.kaf"), "audio"), Hashes(Path("c.kaf"), "audio"));
}

TEST_F(Export, RangesAreHalfOpenAndCountFromTheFilmsStart) {
    const std::string film = Sample("square.kvf"); // 10 images a second
    for (const auto& [range, count] : {std::pair<std::string, int>{"0-1", 10},
                                       {"0.95-2", 10},
                                       {"5f-8f", 3},
                                       {"-3f,57f-", 6},
                                       {"0:05.5-", 5},
                                       {"1-1.2,1-1.2", 4}}) {
        const ToolResult result =
            RunTool({"export", film, Path("r.y4m"), "--range", range, "-f", "--json"});
        ASSERT_EQ(result.code, 0) << result.messages;
        EXPECT_EQ(nlohmann::json::parse(result.output).at("images"), count) << range;
    }
    for (const std::string range : {"2-1", "5", "-", "", "1-2,", "1x-2", "1:60-2", "60f-"})
        EXPECT_EQ(RunTool({"export", film, Path("x.y4m"), "--range", range}).code, 2) << range;
    EXPECT_FALSE(std::filesystem::exists(Path("x.y4m")));
}

TEST_F(Export, TimingRepeatsAndDropsWhatTheFilmSays) {
    ASSERT_EQ(RunTool({"export", Sample("screen.kaf"), Path("s.wav"), "--range", "0-1"}).code, 0);
    // Two images share the first audio frame, one is shown for three.
    const std::string film =
        WithSides({{0, 1000}, {0, 1050}, {1, 1100}, {4, 1400}, {5, 1500}, {6, 0x10000000 + 1600}});
    ASSERT_EQ(RunTool({"import", Path("s.wav"), Path("raw.kaf")}).code, 0); // 10 frames a second
    const auto told = [&](const std::string& rule) {
        const ToolResult result = RunTool(
            {"export", film, Path("t.y4m"), "--timing", rule, "--range", "0f-6f", "-f", "--json"});
        EXPECT_EQ(result.code, 0) << result.messages;
        const auto json = nlohmann::json::parse(result.output);
        return std::array<int, 3>{json.at("images"), json.at("images_repeated"),
                                  json.at("images_dropped")};
    };
    EXPECT_EQ(told("cfr"), (std::array{6, 0, 0}));
    EXPECT_EQ(told("sync"), (std::array{7, 2, 1}));
    EXPECT_EQ(told("capture"), (std::array{7, 2, 1}));
    EXPECT_EQ(RunTool({"export", Sample("square.kvf"), Path("u.y4m"), "--timing", "capture"}).code,
              2);
}

TEST_F(Export, StandardOutputHoldsWhatAFileWould) {
    const std::string film = Sample("square.kvf");
    ASSERT_EQ(RunTool({"export", film, Path("a.y4m"), "--scale", "2"}).code, 0);
    const ToolResult piped = RunTool({"export", film, "-", "--format", "y4m", "--scale", "2"});
    EXPECT_EQ(piped.code, 0);
    const Bytes file = ReadFile(Path("a.y4m"));
    EXPECT_TRUE(std::ranges::equal(piped.output, file, [](char a, std::uint8_t b) {
        return static_cast<std::uint8_t>(a) == b;
    }));
    EXPECT_EQ(RunTool({"export", film, "-"}).output.size(), 60U * 128 * 96 * 3);
    EXPECT_EQ(RunTool({"export", film, "-", "--format", "png"}).code, 2);
}

TEST_F(Export, WhatFailsLeavesNothing) {
    const auto before = Names();
    EXPECT_EQ(RunTool({"export", Sample("square.kvf"), Path("a.wav")}).code, 2);
    EXPECT_EQ(RunTool({"export", Sample("screen.kaf"), Path("a.png")}).code, 2);
    EXPECT_EQ(RunTool({"export", Sample("square.kvf"), Path("a.png")}).code, 2) << "no number";
    EXPECT_EQ(RunTool({"export", Sample("square.kvf"), Path("no/a%d.png")}).code, 2);
    EXPECT_EQ(RunTool({"export", Sample("square.kvf"), Path("a.xyz")}).code, 2);
    EXPECT_EQ(RunTool({"export", Sample("square.kvf"), Path("a%d.bmp"), "--scale", "8"},
                      {.largest_file = 100000})
                  .code,
              2);
    EXPECT_EQ(
        RunTool({"export", Sample("screen.kaf"), Path("a.wav")}, {.largest_file = 50000}).code, 2);
    EXPECT_EQ(Names(), before);
}

} // namespace

} // namespace kelvo::test
