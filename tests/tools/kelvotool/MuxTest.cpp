// Film and tracks, there and back, and the numbers that tie a picture to its sound.

#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

namespace kelvo::test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Mux : public ToolTest {
protected:
    void SetUp() override {
        sound_ = Copy("screen.kaf", "a.kaf");
        picture_ = Copy("square.kvf", "a.kvf");
    }
    nlohmann::json Check(const std::string& video, const std::string& audio, int code) const {
        const ToolResult result = RunTool({"link", video, audio, "--check", "--json"});
        EXPECT_EQ(result.code, code) << result.messages;
        return nlohmann::json::parse(result.output);
    }

    std::string sound_;
    std::string picture_;
};

TEST_F(Mux, AFilmPartsIntoTheVeryTracksItWasMadeOf) {
    const std::string film = Path("film.kva");
    ASSERT_EQ(RunTool({"mux", sound_, picture_, film}).code, 0);
    const Bytes bytes = ReadFile(film);
    const auto audio_end = static_cast<std::uint32_t>(16 + ReadFile(sound_).size());
    EXPECT_THAT((std::vector{NumberAt(bytes, 0), NumberAt(bytes, 4), NumberAt(bytes, 8),
                             NumberAt(bytes, 12)}),
                ElementsAre(16, audio_end, audio_end, bytes.size()));
    ASSERT_EQ(RunTool({"demux", film}).code, 0);
    EXPECT_EQ(ReadFile(Path("film.kaf")), ReadFile(sound_));
    EXPECT_EQ(ReadFile(Path("film.kvf")), ReadFile(picture_));
    EXPECT_EQ(RunTool({"demux", film}).code, 2) << "nothing is replaced without being asked";
    EXPECT_EQ(RunTool({"demux", film, "-f"}).code, 0);
}

TEST_F(Mux, WhatDoesNotFitIsRefusedAndLeavesNothing) {
    const auto before = Names();
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"mux", picture_, sound_, Path("x.kva")},
          {"mux", sound_, picture_, Path("x.kvf")},
          {"mux", sound_, Path("none.kvf"), Path("x.kva")},
          {"mux", sound_, picture_, Path("x.kva"), "--offset", "2"},
          {"mux", sound_, picture_, Path("x.kva"), "--link", "--offset", "31"},
          {"demux", sound_},
          {"link", sound_, sound_},
          {"link", picture_},
          {"link", picture_, sound_, "-o", Path("x.kva")}}) {
        const ToolResult result = RunTool(arguments);
        EXPECT_EQ(result.code, 2) << testing::PrintToString(arguments) << result.messages;
    }
    EXPECT_EQ(Names(), before);
}

TEST_F(Mux, ACutFilmPartsAsFarAsItGoes) {
    const std::string film = Copy("cut.kva", "cut.kva");
    const ToolResult result = RunTool({"demux", film});
    EXPECT_EQ(result.code, 1);
    const Bytes whole = ReadFile(film);
    EXPECT_EQ(ReadFile(Path("cut.kvf")), Bytes(whole.begin() + NumberAt(whole, 8), whole.end()));
}

TEST_F(Mux, LinkingChangesTheNumbersAndNothingElse) {
    const auto records = Records(picture_, "video");
    ASSERT_EQ(RunTool({"link", picture_, sound_}).code, 0);
    EXPECT_EQ(Check(picture_, sound_, 0).at("differing"), 0);
    const Bytes linked = ReadFile(picture_);
    ASSERT_EQ(RunTool({"link", picture_, sound_, "--offset", "-7", "-o", Path("b.kvf")}).code, 0);
    EXPECT_EQ(ReadFile(picture_), linked);
    EXPECT_GT(Check(Path("b.kvf"), sound_, 1).at("differing"), 0);
    const auto moved = Records(Path("b.kvf"), "video");
    ASSERT_EQ(moved.size(), records.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(moved[i].at("sha256"), records[i].at("sha256"));
        EXPECT_EQ(moved[i].at("side").get<std::string>().substr(8),
                  records[i].at("side").get<std::string>().substr(8));
    }
    EXPECT_EQ(RunTool({"link", Path("b.kvf"), sound_}).code, 0);
    EXPECT_EQ(ReadFile(Path("b.kvf")), linked);
    ASSERT_EQ(RunTool({"mux", sound_, picture_, Path("m.kva"), "--link", "--offset", "3"}).code, 0);
    const ToolResult drift = RunTool({"link", Path("m.kva"), "--check"});
    EXPECT_EQ(drift.code, 1);
    EXPECT_THAT(drift.output, HasSubstr("not tied by the rule"));
    EXPECT_EQ(RunTool({"link", Path("m.kva")}).code, 0);
    EXPECT_EQ(RunTool({"link", Path("m.kva"), "--check"}).code, 0);
    EXPECT_EQ(RunTool({"verify", Path("m.kva")}).code, 0);
}

} // namespace

} // namespace kelvo::test
