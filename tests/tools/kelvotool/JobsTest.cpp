// Work on several cores: the same bytes as on one; and what convert and verify do around it: the
// best type, the time, lists of hashes, the quick look.

#include "tests/tools/kelvotool/ToolRun.h"

#include "media/FilmFile.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace kelvo::test {

namespace {

using testing::HasSubstr;

class Jobs : public ToolTest {};

TEST_F(Jobs, MakeTheSameBytesAsOne) {
    struct {
        const char* sample;
        const char* type;
        const char* key_interval;
    } const rows[] = {
        {"square.kvf", "9", "999999"}, {"square.kvf", "8", "7"},  {"square.kvf", "6", "999999"},
        {"square.kvf", "7", "1"},      {"screen.kaf", "17", "5"}, {"screen.kaf", "22", "5"},
        {"bells.kaf", "16", "5"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.sample << " to " << row.type);
        const std::string extension = std::filesystem::path(row.sample).extension();
        // Both ways: from one key record, and from many.
        for (const std::string& source : {Sample(row.sample), Path("1" + extension)}) {
            const auto convert = [&](const char* jobs) {
                const std::string output = Path(jobs + std::string("j") + extension);
                const ToolResult result =
                    RunTool({"convert", source, output, "--type", row.type, "--key-interval",
                             row.key_interval, "--jobs", jobs, "-f"});
                EXPECT_EQ(result.code, 0) << result.messages;
                return ReadFile(output);
            };
            const Bytes alone = convert("1");
            EXPECT_EQ(convert("2"), alone);
            EXPECT_EQ(convert("7"), alone);
            WriteFile(Path("1" + extension), alone);
            if (std::string(row.type) == "22") break; // which loses something each time
        }
        EXPECT_EQ(RunTool({"verify", Path("1" + extension), "--jobs", "5"}).code, 0);
    }
}

TEST_F(Jobs, FindTheSameDamageAsOne) {
    Bytes bytes = ReadFile(Sample("square.kvf"));
    const std::uint32_t index = NumberAt(bytes, 28);
    for (const std::size_t n : {std::size_t{11}, std::size_t{12}, std::size_t{40}}) {
        const std::uint32_t record = NumberAt(bytes, index + n * 4);
        bytes[record + 4 + NumberAt(bytes, record) / 2] ^= 0x55U;
        std::fill_n(bytes.begin() + record + 4 + NumberAt(bytes, record) / 2,
                    NumberAt(bytes, record) / 4, std::uint8_t{0});
    }
    WriteFile(Path("a.kvf"), bytes);
    const auto run = [&](const char* jobs) {
        const std::string output = Path(jobs + std::string(".kvf"));
        const ToolResult converted =
            RunTool({"convert", Path("a.kvf"), output, "--type", "9", "--jobs", jobs});
        const ToolResult verified = RunTool({"verify", Path("a.kvf"), "--jobs", jobs});
        EXPECT_EQ(converted.code, 1);
        EXPECT_EQ(verified.code, 1);
        return std::tuple(converted.messages, verified.messages, ReadFile(output));
    };
    EXPECT_EQ(run("4"), run("1"));
}

TEST_F(Jobs, BestTypeIsTheSmallestOfThoseThatLoseNothing) {
    const ToolResult best =
        RunTool({"convert", Sample("square.kvf"), Path("best.kvf"), "--type", "best", "--json"});
    ASSERT_EQ(best.code, 0) << best.messages;
    const auto json = nlohmann::json::parse(best.output);
    const auto& track = json.at("tracks").at(0);
    EXPECT_EQ(track.at("records_proved"), 60);
    EXPECT_EQ(Contents(Path("best.kvf"), "video"), Contents(Sample("square.kvf"), "video"));
    for (const auto& trial : track.at("trials")) {
        const std::string type = std::to_string(trial.at("type").get<int>());
        SCOPED_TRACE(type);
        ASSERT_EQ(
            RunTool({"convert", Sample("square.kvf"), Path("a.kvf"), "--type", type, "-f"}).code,
            0);
        EXPECT_GE(ReadFile(Path("a.kvf")).size(), ReadFile(Path("best.kvf")).size());
    }
    const ToolResult sound =
        RunTool({"convert", Sample("bells.kaf"), Path("b.kaf"), "--type", "best"});
    EXPECT_EQ(sound.code, 0);
    EXPECT_THAT(sound.output, HasSubstr("makes its sound smallest"));
}

TEST_F(Jobs, KeepTimeGivesTheNewFileTheOldOnesTime) {
    const std::string input = Copy("screen.kaf", "a.kaf");
    using std::chrono::hours;
    const auto then = std::filesystem::file_time_type::clock::now() - hours(24 * 400);
    std::filesystem::last_write_time(input, then);
    ASSERT_EQ(RunTool({"convert", input, Path("b.kaf"), "--type", "17", "--keep-time"}).code, 0);
    ASSERT_EQ(RunTool({"convert", input, Path("c.kaf"), "--type", "17"}).code, 0);
    EXPECT_EQ(std::filesystem::last_write_time(Path("b.kaf")),
              std::filesystem::last_write_time(input));
    EXPECT_NE(std::filesystem::last_write_time(Path("c.kaf")),
              std::filesystem::last_write_time(input));
}

TEST_F(Jobs, HashListFindsWhatHasChanged) {
    const std::string film = Path("a.kva");
    ASSERT_EQ(
        WriteFilmFile(film.c_str(), Sample("screen.kaf").c_str(), Sample("square.kvf").c_str())
            .fault,
        Fault::None);
    const std::string list = Path("list");
    ASSERT_EQ(RunTool({"verify", film, "--write-hashes", list}).code, 0);
    EXPECT_EQ(RunTool({"verify", film, "--write-hashes", list}).code, 2); // it exists
    EXPECT_EQ(RunTool({"verify", film, "--hashes", list}).code, 0);
    EXPECT_EQ(RunTool({"verify", film, "--hashes", list, "--quick"}).code, 0);
    // A film in another type is another file, and decodes to the same.
    ASSERT_EQ(RunTool({"convert", film, film + "x.kva", "--type", "9"}).code, 0);
    std::filesystem::rename(film + "x.kva", film);
    const ToolResult converted = RunTool({"verify", film, "--hashes", list, "--json"});
    EXPECT_EQ(converted.code, 1);
    const auto json = nlohmann::json::parse(converted.output);
    ASSERT_EQ(json.at("problems").size(), 1U) << converted.messages;
    EXPECT_EQ(json.at("problems").at(0).at("code"), "record-differs");
    // One pixel.
    Bytes lines = ReadFile(list);
    const std::string text(lines.begin(), lines.end());
    const std::size_t video = text.find(" video ");
    ASSERT_NE(video, std::string::npos);
    lines[video - 1] = lines[video - 1] == '0' ? '1' : '0';
    WriteFile(list, lines);
    EXPECT_THAT(RunTool({"verify", film, "--hashes", list}).messages,
                HasSubstr("video: what it decodes to has another hash"));
    EXPECT_THAT(RunTool({"verify", Sample("bells.kaf"), "--hashes", list}).messages,
                HasSubstr("the list has no hash"));
    WriteFile(list, Bytes{'n', 'o', '\n'});
    EXPECT_EQ(RunTool({"verify", film, "--hashes", list}).code, 2);
    EXPECT_EQ(RunTool({"verify", film, "--hashes", Path("none")}).code, 2);
}

TEST_F(Jobs, QuickLookSeesIndexAndSideBlocksButNoPixels) {
    const Bytes sound = ReadFile(Sample("square.kvf"));
    const std::uint32_t index = NumberAt(sound, 28);
    const auto verify = [&](const Bytes& bytes, const char* option) {
        WriteFile(Path("a.kvf"), bytes);
        return RunTool({"verify", Path("a.kvf"), option});
    };
    Bytes pixels = sound;
    const std::uint32_t record = NumberAt(sound, index + 59 * 4);
    std::fill_n(pixels.begin() + record + 4, NumberAt(pixels, record), std::uint8_t{0});
    EXPECT_EQ(verify(pixels, "--quick").code, 0);
    EXPECT_EQ(verify(pixels, "--jobs=2").code, 1);
    Bytes places = sound;
    PutNumber(places, index + 30 * 4, NumberAt(sound, index + 30 * 4) + 1);
    EXPECT_EQ(verify(places, "--quick").code, 1);
    // Numbers that tie images to the sound never go back.
    Bytes ties = sound;
    for (std::size_t n = 0; n < 60; ++n)
        PutNumber(ties, NumberAt(sound, index + (61 + n) * 4),
                  n == 30 ? 7 : static_cast<std::uint32_t>(n));
    const ToolResult back = verify(ties, "--quick");
    EXPECT_EQ(back.code, 1);
    EXPECT_THAT(back.messages, HasSubstr("record 30"));
}

} // namespace

} // namespace kelvo::test
