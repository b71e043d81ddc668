// Films of what other programs wrote, and the pictures that tell what a film is.

#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

#include <array>
#include <filesystem>
#include <set>

namespace kelvo::test {

namespace {

using testing::HasSubstr;

class Import : public ToolTest {
protected:
    void SetUp() override {
        // Another program's picture and sound: red, green and blue bars that move, a tone in
        // stereo.
        Make({"-f", "lavfi", "-i", "testsrc=size=64x48:rate=10:duration=2", Path("p%03d.png")});
        Make({"-f", "lavfi", "-i", "sine=frequency=440:sample_rate=8000:duration=2", "-ac", "2",
              Path("tone.wav")});
    }
    void Make(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"-v", "error", "-y"});
        const ToolResult result = RunProgram("/usr/bin/ffmpeg", arguments);
        ASSERT_EQ(result.code, 0) << result.messages;
    }
    nlohmann::json Info(const std::string& file) const {
        return nlohmann::json::parse(RunTool({"info", file, "--json"}).output);
    }
};

TEST_F(Import, APictureSeriesAndASoundBecomeALinkedFilm) {
    const std::string film = Path("film.kva");
    const ToolResult result = RunTool(
        {"import", Path("p%03d.png"), film, "--sound", Path("tone.wav"), "--fps", "10", "--link"});
    ASSERT_EQ(result.code, 0) << result.messages;
    EXPECT_THAT(result.messages, HasSubstr("2 channels become one"));
    EXPECT_THAT(result.messages, HasSubstr("8 bits a channel become 5"));
    EXPECT_EQ(RunTool({"verify", film}).code, 0);
    EXPECT_EQ(RunTool({"link", film, "--check"}).code, 0);
    const auto info = Info(film);
    EXPECT_EQ(info.at("v").at("track").at("nImgAlSec"), 10);
    EXPECT_EQ(info.at("v").at("container").at("RecordCount"), 20);
    EXPECT_EQ(info.at("a").at("container").at("RecordCount"), 20);
    EXPECT_EQ(info.at("a").at("track").at("BytesPerSample"), 2);
    EXPECT_EQ(RunTool({"import", Path("p%03d.png"), film, "--strict", "-f"}).code, 1)
        << "what is lost counts where warnings count";
}

TEST_F(Import, TheVorbisFormIsMadeWithinAFilmAndByItself) {
    ASSERT_EQ(RunTool({"import", Path("tone.wav"), Path("v.kaf"), "--audio-type", "69",
                       "--audio-frames", "5"})
                  .code,
              0);
    EXPECT_EQ(Info(Path("v.kaf")).at("a").at("form"), "vorbis");
    ASSERT_EQ(RunTool({"import", Path("p%03d.png"), Path("v.kva"), "--fps", "10", "--sound",
                       Path("tone.wav"), "--audio-type", "69"})
                  .code,
              0);
    EXPECT_EQ(RunTool({"verify", Path("v.kva")}).code, 0);
    EXPECT_EQ(RunTool({"export", Path("v.kva"), Path("v.ogg")}).code, 0);
    EXPECT_EQ(RunTool({"import", Path("tone.wav"), Path("v.kaf"), "--audio-type", "69"}).code, 2);
}

TEST_F(Import, EveryTypeTakesWhatItCodesAndRefusesTheRest) {
    for (const std::string type : {"1", "2", "3", "4", "5", "6", "7", "8", "9", "17", "99"}) {
        const std::string film = Path("t" + type + ".kvf");
        const ToolResult result =
            RunTool({"import", Path("p%03d.png"), film, "--type", type, "--dither"});
        ASSERT_EQ(result.code, 0) << type << result.messages;
        EXPECT_EQ(RunTool({"verify", film}).code, 0) << type;
        EXPECT_EQ(Contents(film, "video"), Contents(Path("t1.kvf"), "video")) << type;
    }
    for (const std::string type : {"15", "16", "17", "18", "20", "30", "99"}) {
        const ToolResult result = RunTool({"import", Path("tone.wav"), Path("a" + type + ".kaf"),
                                           "--audio-type", type, "--audio-bits", "8"});
        EXPECT_EQ(result.code, 0) << type << result.messages;
    }
    for (const std::vector<std::string>& options : {std::vector<std::string>{"--type", "15"},
                                                    {"--type", "8", "--bits", "24"},
                                                    {"--type", "10"},
                                                    {"--type", "5", "--key-interval", "3"},
                                                    {"--size", "0x5"},
                                                    {"--link"}}) {
        std::vector<std::string> arguments{"import", Path("p%03d.png"), Path("x.kvf")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        EXPECT_EQ(RunTool(arguments).code, 2) << testing::PrintToString(options);
    }
    EXPECT_EQ(RunTool({"import", Path("tone.wav"), Path("x.kaf"), "--audio-type", "20",
                       "--audio-bits", "16"})
                  .code,
              2);
}

TEST_F(Import, OtherRatesKeepTheFilmsTime) {
    Make({"-i", Path("p%03d.png"), "-pix_fmt", "yuv420p", Path("p.y4m")}); // 25 a second
    ASSERT_EQ(RunTool({"import", Path("p.y4m"), Path("y.kvf"), "--fps", "10"}).code, 0);
    EXPECT_EQ(Info(Path("y.kvf")).at("v").at("container").at("RecordCount"), 8);
    ASSERT_EQ(RunTool({"import", Path("p.y4m"), Path("z.kvf"), "--fps", "50"}).code, 0);
    EXPECT_EQ(Info(Path("z.kvf")).at("v").at("container").at("RecordCount"), 40);
}

TEST_F(Import, WhatIsDamagedOrDoesNotFitLeavesNothing) {
    Bytes png = ReadFile(Path("p005.png"));
    WriteFile(Path("q0.png"), png);
    png.resize(png.size() / 2);
    WriteFile(Path("q1.png"), png);
    Make({"-i", Path("p001.png"), "-vf", "scale=32:32", Path("r1.png")});
    WriteFile(Path("r0.png"), ReadFile(Path("p001.png")));
    Bytes wav = ReadFile(Path("tone.wav"));
    wav.resize(wav.size() - 5000);
    WriteFile(Path("cut.wav"), wav);
    WriteFile(Path("not.wav"), Bytes(100, 7));
    WriteFile(Path("huge.bmp"), {'B',  'M',  0, 0, 0,    0,    0, 0, 0, 0, 54, 0, 0, 0, 40, 0, 0, 0,
                                 0xFF, 0x7F, 0, 0, 0xFF, 0x7F, 0, 0, 1, 0, 24, 0, 0, 0, 0,  0});
    const auto before = Names();
    for (const std::string in : {"q%d.png", "r%d.png", "none%d.png", "huge.bmp", "not.wav"}) {
        const ToolResult result = RunTool({"import", Path(in), Path("x.kva")});
        EXPECT_EQ(result.code, 2) << in << result.messages;
    }
    EXPECT_EQ(RunTool({"import", Path("p%03d.png"), Path("x.kvf")}, {.largest_file = 3000}).code,
              2);
    EXPECT_EQ(Names(), before);
    EXPECT_EQ(RunTool({"import", Path("r%d.png"), Path("r.kvf"), "--size", "40x40"}).code, 0);
    EXPECT_EQ(RunTool({"import", Path("cut.wav"), Path("c.kaf")}).code, 1);
}

TEST_F(Import, AThumbnailIsNeitherBlackNorFlat) {
    // Black but for one second in the middle.
    Make({"-f", "lavfi", "-i", "color=black:size=64x48:rate=10:duration=1", Path("m0%02d.png")});
    Make({"-f", "lavfi", "-i", "testsrc=size=64x48:rate=10:duration=1", Path("m1%02d.png")});
    Make({"-f", "lavfi", "-i", "color=white:size=64x48:rate=10:duration=1", Path("m2%02d.png")});
    ASSERT_EQ(RunTool({"import", Path("m%03d.png"), Path("m.kvf"), "--fps", "10"}).code, 1)
        << "numbers are missing in the series";
    const auto colours = [&](const std::string& picture) {
        Make({"-i", Path(picture), "-f", "rawvideo", "-pix_fmt", "rgb24", Path("raw")});
        const Bytes raw = ReadFile(Path("raw"));
        std::set<std::array<std::uint8_t, 3>> found;
        for (std::size_t i = 0; i + 2 < raw.size(); i += 3)
            found.insert({raw[i], raw[i + 1], raw[i + 2]});
        return found.size();
    };
    ASSERT_EQ(RunTool({"thumbnail", Path("m.kvf"), Path("t.png"), "-s", "32"}).code, 0);
    EXPECT_GT(colours("t.png"), 8U);
    ASSERT_EQ(RunTool({"thumbnail", Path("m.kvf"), Path("b.png"), "--at", "0.5"}).code, 0);
    EXPECT_EQ(colours("b.png"), 1U);
    ASSERT_EQ(RunTool({"sheet", Path("m.kvf"), Path("s.png"), "--columns", "3", "--rows", "2",
                       "--width", "300"})
                  .code,
              0);
    EXPECT_GT(colours("s.png"), 8U);
    ASSERT_EQ(RunTool({"thumbnail", Sample("bells.kaf"), Path("w.png")}).code, 0);
    EXPECT_EQ(colours("w.png"), 2U);
    ASSERT_EQ(RunTool({"sheet", Sample("bells.kaf"), Path("ws.png")}).code, 0);
    const ToolResult checked = RunProgram(
        "/usr/bin/pngcheck", {Path("t.png"), Path("b.png"), Path("s.png"), Path("w.png")});
    EXPECT_EQ(checked.code, 0) << checked.output;
    EXPECT_EQ(RunTool({"thumbnail", Path("m.kvf"), Path("t.png")}).code, 2);
    EXPECT_EQ(RunTool({"thumbnail", Path("m.kvf"), Path("u.png"), "--at", "x"}).code, 2);
}

TEST_F(Import, WithoutTheProgramForForeignFormatsItSaysSo) {
    // A copy of the tool in a folder of its own has nothing beside it.
    std::filesystem::copy_file(KELVOTOOL, Path("kelvotool"));
    const ToolResult result =
        RunProgram("/usr/bin/env", {"PATH=/nowhere", Path("kelvotool"), "export",
                                    Sample("square.kvf"), Path("x.gif")});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.messages, HasSubstr("needs the program kelvotool-media"));
}

} // namespace

} // namespace kelvo::test
