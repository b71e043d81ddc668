// Mending films: what rebuild reports, writes and says in its exit code.

#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace kelvo::test {

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr std::size_t kIndexOffsetField = 28;

class Rebuild : public ToolTest {
protected:
    std::string Put(const std::string& name, const Bytes& bytes) const {
        WriteFile(Path(name), bytes);
        return Path(name);
    }
    /// square.kvf (60 records of type 8, key records every 15) with zeros over the records
    /// [first, end), and over its index.
    Bytes Holed(std::size_t first, std::size_t end) const {
        Bytes bytes = ReadFile(Sample("square.kvf"));
        const std::uint32_t index = NumberAt(bytes, kIndexOffsetField);
        const std::uint32_t from = NumberAt(bytes, index + first * 4);
        const std::uint32_t to = NumberAt(bytes, index + end * 4);
        std::fill(bytes.begin() + from, bytes.begin() + to, std::uint8_t{0});
        std::fill(bytes.begin() + index, bytes.end(), std::uint8_t{0});
        return bytes;
    }
    static std::vector<std::string> Hashes(const std::string& file) {
        std::vector<std::string> hashes;
        for (const json& record : Records(file, "video"))
            hashes.push_back(record.at("sha256"));
        return hashes;
    }
};

TEST_F(Rebuild, ReportsRecordByRecordAndWritesNothing) {
    const std::string file = Put("a.kvf", Holed(20, 23));
    const Bytes before = ReadFile(file);
    const ToolResult text = RunTool({"rebuild", "--report", file});
    EXPECT_EQ(text.code, 1);
    EXPECT_THAT(text.output, HasSubstr("records 0 to 19 kept\n"));
    EXPECT_THAT(text.output, HasSubstr("records 20 to 22 lost: "));
    EXPECT_THAT(text.output, HasSubstr("records 23 to 29 doubtful: "));
    EXPECT_THAT(text.output, HasSubstr("records 30 to 59 kept\n"));
    EXPECT_THAT(text.messages, HasSubstr("records 20 to 22: lost"));
    const ToolResult document = RunTool({"rebuild", "--report", "--json", file});
    EXPECT_EQ(document.code, 1);
    const json track = json::parse(document.output).at("track");
    EXPECT_EQ(track.at("index"), "wrong");
    EXPECT_EQ(track.at("kept"), 50);
    EXPECT_EQ(track.at("lost"), 3);
    EXPECT_EQ(track.at("runs").at(1).at("reason"), "destroyed");
    EXPECT_EQ(ReadFile(file), before);
    EXPECT_EQ(RunTool({"rebuild", "--report", Sample("square.kvf")}).code, 0);
}

TEST_F(Rebuild, SalvageKeepsNumbersAndTimesAndLeavesASoundFilm) {
    const std::vector<std::string> whole = Hashes(Sample("square.kvf"));
    const std::string file = Put("a.kvf", Holed(20, 23));
    const ToolResult result = RunTool({"rebuild", "--salvage", file, "-o", Path("b.kvf")});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.output, HasSubstr("60 records: 50 kept, 7 doubtful, 3 lost"));
    EXPECT_EQ(RunTool({"verify", Path("b.kvf")}).code, 0);
    const std::vector<std::string> mended = Hashes(Path("b.kvf"));
    ASSERT_EQ(mended.size(), 60U);
    for (std::size_t n = 0; n < 60; ++n) {
        if (n < 20 || n >= 30) {
            EXPECT_EQ(mended[n], whole[n]) << n;
        }
        if (n >= 20 && n < 23) {
            EXPECT_EQ(mended[n], whole[19]) << n;
        }
    }
    EXPECT_EQ(ReadFile(file), Holed(20, 23));
    EXPECT_EQ(RunTool({"rebuild", "--salvage", Path("b.kvf")}).code, 0);
}

TEST_F(Rebuild, OfAFilmIsWholeWhereTheIndexAloneIsWrong) {
    const Bytes whole = ReadFile(Sample("square.kvf"));
    for (const char* const option : {"--progress=none", "--salvage"}) {
        Bytes bytes = whole;
        std::fill(bytes.begin() + NumberAt(bytes, kIndexOffsetField), bytes.end(), std::uint8_t{7});
        const std::string file = Put("a.kvf", bytes);
        EXPECT_EQ(RunTool({"rebuild", option, file}).code, 0);
        EXPECT_EQ(ReadFile(file), whole);
    }
}

TEST_F(Rebuild, SaysWhatAnIndexAloneCannotMend) {
    Bytes bytes = ReadFile(Sample("square.kvf"));
    const std::uint32_t record = NumberAt(bytes, NumberAt(bytes, kIndexOffsetField) + 3 * 4);
    PutNumber(bytes, record, 0x7FFFFFFF);
    const std::string file = Put("a.kvf", bytes);
    const ToolResult kept = RunTool({"rebuild", file});
    EXPECT_EQ(kept.code, 1);
    EXPECT_THAT(kept.output, HasSubstr("the index stays, around damaged records"));
    EXPECT_THAT(kept.output, Not(HasSubstr("sound")));
    EXPECT_THAT(kept.messages, HasSubstr("(record 3, offset " + std::to_string(record) + ")"));
    EXPECT_EQ(ReadFile(file), bytes);
    EXPECT_EQ(RunTool({"rebuild", "--salvage", file}).code, 0);
    EXPECT_EQ(ReadFile(file), ReadFile(Sample("square.kvf")));

    // Without any index, nothing behind the damaged length is given up.
    std::fill(bytes.begin() + NumberAt(bytes, kIndexOffsetField), bytes.end(), std::uint8_t{0});
    const ToolResult rebuilt = RunTool({"rebuild", Put("b.kvf", bytes)});
    EXPECT_EQ(rebuilt.code, 1);
    EXPECT_THAT(rebuilt.output, HasSubstr("a new index of 60 records"));
}

TEST_F(Rebuild, KeepsBackupsAndNeverReplacesOne) {
    const std::string file = Put("a.kvf", Holed(20, 23));
    EXPECT_EQ(RunTool({"rebuild", "--backup", "--salvage", file}).code, 1);
    EXPECT_EQ(ReadFile(Path("a.kvf.bak")), Holed(20, 23));
    EXPECT_EQ(RunTool({"rebuild", "--backup", file}).code, 0); // nothing to do, nothing to keep
    Put("a.kvf", Holed(30, 31));
    EXPECT_EQ(RunTool({"rebuild", "--backup", "--salvage", file}).code, 1);
    EXPECT_EQ(ReadFile(Path("a.kvf.bak")), Holed(20, 23));
    EXPECT_EQ(ReadFile(Path("a.kvf.bak1")), Holed(30, 31));
    EXPECT_THAT(Names(), ElementsAre("a.kvf", "a.kvf.bak", "a.kvf.bak1"));
}

TEST_F(Rebuild, FindsTracksThatTheDirectoryMisplaces) {
    const Bytes film = ReadFile(Sample("cut.kva"));
    for (const std::size_t field : {std::size_t{0}, std::size_t{8}, std::size_t{12}}) {
        for (const std::uint32_t value : {0U, 1U, 5000U, ~0U}) {
            SCOPED_TRACE(testing::Message() << field << " " << value);
            Bytes bytes = film;
            PutNumber(bytes, field, value);
            const std::string file = Put("a.kva", bytes);
            const ToolResult result = RunTool({"rebuild", "--salvage", file, "--json"});
            EXPECT_EQ(result.code, 1) << result.messages; // its picture is cut off
            const json document = json::parse(result.output, nullptr, false);
            ASSERT_FALSE(document.is_discarded());
            EXPECT_EQ(document.at("audio").at("kept"), 60);
            EXPECT_EQ(document.at("video").at("kept"), 28);
            EXPECT_EQ(RunTool({"verify", file}).code, 0);
        }
    }
}

TEST_F(Rebuild, OptionsThatContradictEachOtherAreWrongUse) {
    const std::string file = Copy("square.kvf", "a.kvf");
    const std::string other = Copy("square.kvf", "b.kvf");
    const std::vector<std::string> uses[] = {
        {"rebuild"},
        {"rebuild", file, other, "-o", Path("c.kvf")},
        {"rebuild", file, "-o", Path("c.kvf"), "--backup"},
        {"rebuild", file, "--report", "--salvage"},
        {"rebuild", file, "-o", Path("c.kva")},
        {"rebuild", file, "-o", other},
        {"rebuild", file, "-o", file, "-f"},
    };
    for (const auto& use : uses)
        EXPECT_EQ(RunTool(use).code, 2) << testing::PrintToString(use);
    EXPECT_EQ(RunTool({"rebuild", file, "-o", other, "-f"}).code, 0);
    EXPECT_THAT(Names(), ElementsAre("a.kvf", "b.kvf"));
}

TEST_F(Rebuild, DoesSeveralFilesAndGivesTheHighestCode) {
    const std::string damaged = Put("a.kvf", Holed(20, 23));
    const std::string sound = Copy("screen.kaf", "b.kaf");
    const ToolResult result =
        RunTool({"rebuild", "--jsonl", "--salvage", damaged, sound, Path("none.kvf")});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(std::ranges::count(result.output, '\n'), 3);
    EXPECT_EQ(RunTool({"verify", damaged, sound}).code, 0);
}

TEST_F(Rebuild, FillsLostSoundWithSilence) {
    Bytes bytes = ReadFile(Sample("screen.kaf"));
    const std::uint32_t index = NumberAt(bytes, kIndexOffsetField);
    const std::uint32_t from = NumberAt(bytes, index + 10 * 4);
    const std::uint32_t to = NumberAt(bytes, index + 12 * 4);
    std::fill(bytes.begin() + from, bytes.begin() + to, std::uint8_t{0});
    std::fill(bytes.begin() + index, bytes.end(), std::uint8_t{0});
    const std::string file = Put("a.kaf", bytes);
    EXPECT_EQ(RunTool({"rebuild", "--salvage", file}).code, 1);
    EXPECT_EQ(RunTool({"verify", file}).code, 0);
    ASSERT_EQ(RunTool({"frames", file, "--raw", Path("a.raw")}).code, 0);
    const Bytes raw = ReadFile(Path("a.raw"));
    constexpr std::size_t kFrame = 2205;
    ASSERT_EQ(raw.size(), 60 * kFrame);
    for (std::size_t i = 10 * kFrame; i < 12 * kFrame; ++i)
        ASSERT_NEAR(raw[i], 127, 1) << i;
}

} // namespace

} // namespace kelvo::test
