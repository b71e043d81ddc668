// What the tool says of films that other programs made, against what is known of them: those in
// the repository, and the larger ones beside it, which KELVO_SAMPLES names.

#include "tests/tools/kelvotool/ToolRun.h"

#include <openssl/evp.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>

namespace kelvo::test {

namespace {

using nlohmann::json;

std::string BesideRepository() {
    const char* const chosen = std::getenv("KELVO_SAMPLES");
    return chosen != nullptr ? chosen : KELVO_SAMPLES;
}

json Expected(const std::string& folder) {
    std::ifstream stream(folder + "/expected.json");
    if (!stream) return {};
    return json::parse(stream).at("files");
}

std::string Sha256(std::span<const std::uint8_t> bytes) {
    std::array<std::uint8_t, 32> digest{};
    EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr);
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += "0123456789abcdef"[byte >> 4U];
        text += "0123456789abcdef"[byte & 15U];
    }
    return text;
}

/// Every value of `expected` stands in `actual`, which may hold more.
void ExpectContains(const json& actual, const json& expected, const std::string& where) {
    for (const auto& [key, value] : expected.items()) {
        ASSERT_TRUE(actual.contains(key)) << where << "/" << key;
        if (value.is_object()) {
            ExpectContains(actual[key], value, where + "/" + key);
        } else {
            EXPECT_EQ(actual[key], value) << where << "/" << key;
        }
    }
}

void CheckInfo(const std::string& file, const json& expected) {
    const ToolResult result = RunTool({"info", file, "--json"});
    json known = expected.at("info");
    const bool is_damaged = known.contains("v") && known["v"].contains("error");
    EXPECT_EQ(result.code, is_damaged ? 1 : 0) << result.messages;
    const json document = json::parse(result.output, nullptr, false);
    ASSERT_FALSE(document.is_discarded());
    if (is_damaged) {
        // The header is there, whatever became of the index.
        EXPECT_TRUE(document.at("v").contains("error"));
        EXPECT_EQ(document["v"]["opens"], false);
        EXPECT_TRUE(document["v"].contains("container"));
        EXPECT_FALSE(document.at("problems").empty());
        known.erase("v");
    }
    ExpectContains(document, known, file);
    EXPECT_EQ(document.at("size"), expected.at("size"));
}

std::vector<std::uint32_t> SideNumbers(const std::string& hex, std::size_t count) {
    std::vector<std::uint32_t> numbers;
    for (std::size_t i = 0; i < count && (i + 1) * 8 <= hex.size(); ++i) {
        const auto bits = static_cast<std::uint32_t>(std::stoul(hex.substr(i * 8, 8), nullptr, 16));
        numbers.push_back(__builtin_bswap32(bits));
    }
    return numbers;
}

/// A hash that is not known is null.
bool Agrees(const json& known, const json& actual) {
    return known.is_null() || known == actual;
}

void CheckRecords(const json& records, const json& expected) {
    ASSERT_EQ(records.size(), expected.at("count"));
    std::vector<std::size_t> corrupt;
    for (std::size_t n = 0; n < records.size(); ++n) {
        const json& record = records[n];
        EXPECT_EQ(record.at("n"), n);
        EXPECT_TRUE(Agrees(expected.at("sha256").at(n), record.at("sha256"))) << "record " << n;
        if (record.at("corrupt")) corrupt.push_back(n);
        if (expected.at("form") == "vorbis") {
            EXPECT_EQ(record.at("side"), "");
            continue;
        }
        const json& side = expected.at("side").at(n);
        EXPECT_EQ(json(SideNumbers(record.at("side"), side.size())), side) << "record " << n;
        EXPECT_GT(record.at("stored"), 0);
    }
    EXPECT_EQ(json(corrupt), expected.at("corrupt"));
}

void CheckRawBytes(const std::string& file, const std::string& track, const std::string& output,
                   const json& records) {
    const ToolResult result = RunTool({"frames", file, "--track", track, "--raw", output});
    EXPECT_EQ(result.code, 0) << result.messages;
    const Bytes bytes = ReadFile(output);
    ASSERT_FALSE(records.empty());
    const std::size_t length = bytes.size() / records.size();
    for (std::size_t n = 0; n < records.size(); ++n) {
        const auto record = std::span(bytes).subspan(n * length, length);
        EXPECT_EQ(Sha256(record), records[n].at("sha256")) << "record " << n;
    }
}

class Samples : public ToolTest {
protected:
    void CheckTrack(const std::string& file, const std::string& track, const json& expected) {
        SCOPED_TRACE(track);
        const json records = Records(file, track);
        CheckRecords(records, expected);
        CheckRawBytes(file, track, Path(track + ".raw"), records);
        EXPECT_EQ(RunTool({"frames", file, "--track", track, "--raw", Path(track + ".raw")}).code,
                  2);
        std::filesystem::remove(Path(track + ".raw"));
    }
    void CheckFile(const std::string& folder, const std::string& name, const json& expected) {
        SCOPED_TRACE(name);
        const std::string file = folder + "/" + name;
        const bool is_good = expected.at("class") == "good";
        CheckInfo(file, expected);
        EXPECT_EQ(RunTool({"verify", file}).code, is_good ? 0 : 1);
        // What has lost its index can be read once it has a new one.
        const std::string copy = Path(name);
        WriteFile(copy, ReadFile(file));
        const ToolResult rebuilt = RunTool({"rebuild", copy});
        if (is_good) {
            // A Vorbis track alone has no index that could be made.
            const bool has_index =
                expected.at("info").dump().find("RecordCount") != std::string::npos;
            EXPECT_EQ(rebuilt.code, has_index ? 0 : 2) << rebuilt.messages;
            EXPECT_EQ(ReadFile(copy), ReadFile(file));
        } else {
            EXPECT_EQ(rebuilt.code, 1) << rebuilt.messages;
            EXPECT_EQ(RunTool({"verify", copy}).code, 0);
        }
        for (const auto& [track, known] : expected.at("tracks").items())
            CheckTrack(copy, track == "a" ? "audio" : "video", known);
    }
    void CheckFolder(const std::string& folder) {
        const json films = Expected(folder);
        ASSERT_FALSE(films.empty())
            << "no samples in " << folder << "; KELVO_SAMPLES names the folder that holds them";
        for (const auto& [name, expected] : films.items())
            CheckFile(folder, name, expected);
    }
};

TEST_F(Samples, InTheRepositoryAreDescribedAndDecodedAsKnown) {
    CheckFolder(KELVO_SOURCE_DIR "/tests/samples");
}

TEST_F(Samples, BesideTheRepositoryAreDescribedAndDecodedAsKnown) {
    CheckFolder(BesideRepository());
}

} // namespace

} // namespace kelvo::test
