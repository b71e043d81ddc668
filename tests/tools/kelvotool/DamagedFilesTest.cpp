// What the tool says of files that are damaged, cut off, or none of its own, and what rebuild makes
// of them.

#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <random>

namespace kelvo::test {

namespace {

using testing::HasSubstr;
using testing::Not;

// Of square.kvf: 60 records of type 8, key records every 15.
constexpr std::size_t kRecordCountField = 16;
constexpr std::size_t kIndexOffsetField = 28;
constexpr std::size_t kFirstRecord = 1052 + 66;

class DamagedFiles : public ToolTest {
protected:
    Bytes square_ = ReadFile(Sample("square.kvf"));
    std::size_t index_ = NumberAt(square_, kIndexOffsetField);

    /// Writes the bytes as a file of the test.
    std::string Put(const std::string& name, const Bytes& bytes) const {
        WriteFile(Path(name), bytes);
        return Path(name);
    }
};

TEST_F(DamagedFiles, ProblemIsSaidWithRecordAndOffset) {
    // The last pixel words of record 3 go: its stream then describes less than a record.
    const std::uint32_t record = NumberAt(square_, index_ + 3 * 4);
    const std::uint32_t stored = NumberAt(square_, record);
    Bytes bytes = square_;
    std::fill_n(bytes.begin() + record + 4, stored, std::uint8_t{0});
    const std::string file = Put("a.kvf", bytes);
    const ToolResult result = RunTool({"verify", file});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.messages, HasSubstr("kelvotool: " + file + ": "));
    EXPECT_THAT(result.messages, HasSubstr("(record 3, offset " + std::to_string(record) + ")"));
    EXPECT_THAT(result.output, HasSubstr("damaged"));
    const auto records = Records(file, "video");
    EXPECT_EQ(records.at(2).at("corrupt"), false);
    EXPECT_EQ(records.at(3).at("corrupt"), true);
    EXPECT_EQ(RunTool({"frames", file}).code, 1);
}

TEST_F(DamagedFiles, BoxesAreShownOnlyWhenAskedFor) {
    const std::uint32_t record = NumberAt(square_, index_ + 3 * 4);
    std::fill_n(square_.begin() + record + 4, NumberAt(square_, record), std::uint8_t{0});
    const std::string file = Put("a.kvf", square_);
    EXPECT_THAT(RunTool({"verify", file}).messages, Not(HasSubstr("FILE CORROTTO!")));
    EXPECT_THAT(RunTool({"verify", "-v", file}).messages, HasSubstr("FILE CORROTTO!"));
}

TEST_F(DamagedFiles, IndexThatDisagreesWithTheRecordsIsDamage) {
    const std::size_t side_positions = index_ + 61 * 4;
    struct {
        const char* name;
        std::size_t offset;
        const char* said;
    } const rows[] = {
        {"AnOffsetOfARecord", index_ + 7 * 4, "(record 7, offset"},
        {"APositionOfASideBlock", side_positions + 9 * 4, "(record 9, offset"},
        {"TheEndOfTheRecords", index_ + 60 * 4, "end of the records"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Bytes bytes = square_;
        PutNumber(bytes, row.offset, NumberAt(bytes, row.offset) + 4);
        const std::string file = Put("a.kvf", bytes);
        const ToolResult result = RunTool({"verify", file});
        EXPECT_EQ(result.code, 1);
        EXPECT_THAT(result.messages, HasSubstr(row.said));
        // A new index makes it the file that it was.
        EXPECT_EQ(RunTool({"rebuild", file}).code, 0);
        EXPECT_EQ(ReadFile(file), square_);
    }
}

TEST_F(DamagedFiles, KeyRecordThatIsNoneIsFoundByReadingItByNumber) {
    // Key records every 5 are promised where every 15th is one.
    PutNumber(square_, 24, 5);
    const ToolResult result = RunTool({"verify", Put("a.kvf", square_)});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.messages, HasSubstr("another one when it is read by its number (record "));
}

TEST_F(DamagedFiles, HeaderThatWasNeverClosedIsCounted) {
    Bytes bytes = square_;
    bytes.resize(index_);
    PutNumber(bytes, kRecordCountField, 0);
    PutNumber(bytes, kIndexOffsetField, 0);
    const std::string file = Put("a.kvf", bytes);
    const ToolResult verified = RunTool({"verify", file});
    EXPECT_EQ(verified.code, 1);
    EXPECT_THAT(verified.messages, HasSubstr("never closed"));
    EXPECT_EQ(RunTool({"frames", file}).code, 2);
    const ToolResult rebuilt = RunTool({"rebuild", file});
    EXPECT_EQ(rebuilt.code, 0) << rebuilt.messages;
    EXPECT_THAT(rebuilt.output, HasSubstr("a new index of 60 records"));
    EXPECT_EQ(ReadFile(file), square_);
    EXPECT_THAT(Names(), testing::ElementsAre("a.kvf"));
}

TEST_F(DamagedFiles, FilmCutAnywhereIsDescribedAndMended) {
    const Bytes film = ReadFile(Sample("cut.kva"));
    const std::uint32_t video = NumberAt(film, 8);
    const std::size_t cuts[] = {film.size() - 1,
                                std::size_t{video} + 1500,
                                std::size_t{video} + 1052 + 66,
                                std::size_t{video} + 1052,
                                std::size_t{video} + 3,
                                std::size_t{video},
                                1200};
    for (const std::size_t size : cuts) {
        SCOPED_TRACE(size);
        Bytes bytes = film;
        bytes.resize(size);
        const std::string file = Put("a.kva", bytes);
        const ToolResult info = RunTool({"info", file, "--json"});
        EXPECT_EQ(info.code, 1);
        EXPECT_EQ(nlohmann::json::parse(info.output).at("AVDirectory").at(2), video);
        EXPECT_EQ(RunTool({"verify", file}).code, 1);
        EXPECT_EQ(RunTool({"convert", file, Path("b.kva"), "--type", "9"}).code, 2);
        EXPECT_LE(RunTool({"rebuild", file}).code, 2);
        EXPECT_THAT(Names(), testing::ElementsAre("a.kva"));
    }
}

TEST_F(DamagedFiles, SoundThatEndsEarlyIsIncompleteFromThereOn) {
    Bytes bytes = ReadFile(Sample("bells.kaf"));
    const auto whole = Records(Sample("bells.kaf"), "audio");
    bytes.resize(bytes.size() / 2);
    const std::string file = Put("a.kaf", bytes);
    const auto records = Records(file, "audio");
    ASSERT_FALSE(whole.empty());
    ASSERT_EQ(records.size(), whole.size());
    EXPECT_EQ(records.front(), whole.front());
    EXPECT_EQ(records.back().at("corrupt"), true);
    EXPECT_EQ(RunTool({"frames", file}).code, 1);
    EXPECT_EQ(RunTool({"verify", file}).code, 1);
}

TEST_F(DamagedFiles, FrameCountBeyondReasonNeitherHangsNorFloods) {
    Bytes bytes = ReadFile(Sample("bells.kaf"));
    PutNumber(bytes, 30, 0xFFFFFFFF);
    const std::string file = Put("a.kaf", bytes);
    const ToolResult verified = RunTool({"verify", file});
    EXPECT_EQ(verified.code, 1);
    EXPECT_THAT(verified.messages, HasSubstr("(record 60)"));
    EXPECT_EQ(RunTool({"info", file}).code, 0);
}

TEST_F(DamagedFiles, WhatIsNoneOfTheseFilesIsRefused) {
    Put("empty.kvf", {});
    Put("short.kva", Bytes(15));
    Put("zeros.kva", Bytes(4096));
    Put("text.kaf", Bytes(5000, 'x'));
    std::filesystem::create_directory(Path("folder.kvf"));
    for (const char* name :
         {"empty.kvf", "short.kva", "zeros.kva", "text.kaf", "folder.kvf", "missing.kva"}) {
        for (const char* command : {"info", "verify", "frames", "rebuild"}) {
            SCOPED_TRACE(std::string(command) + " " + name);
            const ToolResult result = RunTool({command, Path(name)});
            EXPECT_EQ(result.code, 2);
            EXPECT_EQ(result.output, "");
            EXPECT_THAT(result.messages, HasSubstr("kelvotool: " + Path(name) + ": "));
        }
    }
    EXPECT_THAT(RunTool({"info", "/dev/zero"}).messages, HasSubstr("not an ordinary file"));
}

TEST_F(DamagedFiles, HostileNumbersEndInAnExitCode) {
    std::mt19937 random(20240607);
    const Bytes sources[] = {square_, ReadFile(Sample("cut.kva")), ReadFile(Sample("screen.kaf"))};
    const char* const names[] = {"a.kvf", "a.kva", "a.kaf"};
    const std::uint32_t values[] = {0,  1,  5,  8,          9,          20,
                                    69, 99, 65, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    for (int round = 0; round < 24; ++round) {
        const std::size_t source = static_cast<std::size_t>(round) % std::size(sources);
        Bytes bytes = sources[source];
        const std::size_t start = source == 1 ? (round % 2 == 0 ? 16 : NumberAt(bytes, 8)) : 0;
        const std::size_t offset =
            source == 1 && round % 4 == 1 ? 4 * (random() % 4) : start + 4 * (random() % 8);
        PutNumber(bytes, offset, values[random() % std::size(values)]);
        const std::string file = Put(names[source], bytes);
        for (const char* command : {"info", "verify", "rebuild"}) {
            const ToolResult result = RunTool({command, file});
            EXPECT_LE(result.code, 2) << command << " " << offset << ": " << result.messages;
        }
    }
}

} // namespace

} // namespace kelvo::test
