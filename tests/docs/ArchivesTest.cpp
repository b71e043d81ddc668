// docs/archives.md, run from its first example to its last in one folder of films.

#include "tests/docs/Markdown.h"
#include "tests/tools/kelvotool/ToolRun.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace kelvo::test {

namespace {

namespace fs = std::filesystem;

/// The value of "key=..." behind a block's opening fence.
std::string Remark(const std::string& info, const std::string& key) {
    for (const std::string& word : docs::Words(info)) {
        if (word.starts_with(key + "=")) return word.substr(key.size() + 1);
    }
    return "";
}

std::string Joined(const docs::Block& block) {
    std::string text;
    for (const std::string& line : block.lines)
        text += line + "\n";
    return text;
}

class Archives : public ToolTest {
protected:
    void MakeFilms() {
        fs::create_directories(Path("films/old reels"));
        Copy("square.kvf", "films/picture.kvf");
        Copy("square.kvf", "films/old reels/a pair.kvf");
        Copy("screen.kaf", "films/old reels/a pair.kaf");
        Copy("bells.kaf", "films/bells.kaf");
        Copy("cut.kva", "films/cut.kva");
        ASSERT_EQ(RunTool({"mux", Sample("screen.kaf"), Sample("square.kvf"),
                           Path("films/old reels/it's whole.kva")})
                      .code,
                  0);
    }

    std::vector<nlohmann::json> Lines(const std::string& name) {
        std::vector<nlohmann::json> documents;
        std::ifstream stream(Path(name));
        for (std::string line; std::getline(stream, line);)
            documents.push_back(nlohmann::json::parse(line, nullptr, false));
        return documents;
    }
};

TEST_F(Archives, AreProvedAndFreedByTheExamplesOfTheirDocument) {
    MakeFilms();
    const std::string tools = fs::path(KELVOTOOL).parent_path().string();
    std::size_t tried = 0;
    for (const docs::Block& block :
         docs::ReadDocument(KELVO_SOURCE_DIR "/docs/archives.md").blocks) {
        if (!block.info.starts_with("bash")) continue;
        const std::string text = Joined(block);
        SCOPED_TRACE("line " + std::to_string(block.line) + ":\n" + text);
        if (const std::string file = Remark(block.info, "file"); !file.empty()) {
            std::ofstream(Path(file)) << text;
            continue;
        }
        const std::string status = Remark(block.info, "status");
        const ToolResult result =
            RunProgram("/bin/bash", {"-c", "set -o pipefail; PATH=\"$0:$PATH\"; " + text, tools},
                       {.folder = Folder()});
        EXPECT_EQ(result.code, status.empty() ? 0 : std::stoi(status))
            << result.output << result.messages;
        ++tried;
    }
    EXPECT_GE(tried, 8U);

    // What the examples promise.
    EXPECT_EQ(Lines("verdicts.jsonl").size(), 5U);
    std::size_t damaged = 0;
    for (const auto& verdict : Lines("verdicts.jsonl"))
        damaged += verdict.at("intact") ? 0 : 1;
    EXPECT_EQ(damaged, 1U);
    // A pair whose halves go to two tasks has two lines.
    EXPECT_GE(Lines("all.jsonl").size(), 5U);
    EXPECT_TRUE(fs::exists(Path("free/it's whole.mkv")));
}

} // namespace

} // namespace kelvo::test
