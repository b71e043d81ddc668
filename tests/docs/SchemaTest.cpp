// The JSON that kelvotool prints against docs/kelvotool.schema.json, with a foreign validator.

#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace kelvo::test {

namespace {

namespace fs = std::filesystem;

/// What the validator complains of; empty when nothing.
ToolResult Validate(const std::string& definition, const std::string& documents,
                    const std::string& scratch) {
    std::ofstream(scratch, std::ios::binary) << documents;
    const std::string command =
        std::string("exec python3 " KELVO_SOURCE_DIR "/tests/docs/check_schema.py " KELVO_SOURCE_DIR
                    "/docs/kelvotool.schema.json ") +
        definition + " <" + scratch;
    return RunProgram("/bin/sh", {"-c", command});
}

std::vector<std::string> FilmsIn(const std::string& folder) {
    std::vector<std::string> films;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension == ".kva" || extension == ".kvf" || extension == ".kaf")
            films.push_back(entry.path().string());
    }
    std::ranges::sort(films);
    return films;
}

class Schema : public ToolTest {
protected:
    /// Runs the tool and validates what it printed.
    void Expect(const std::string& definition, std::vector<std::string> arguments) {
        std::string line;
        for (const std::string& argument : arguments)
            line += argument + " ";
        SCOPED_TRACE(line);
        const ToolResult result = RunTool(arguments, {.folder = Folder()});
        ASSERT_LE(result.code, 2) << result.messages;
        const ToolResult verdict = Validate(definition, result.output, Path("documents"));
        EXPECT_EQ(verdict.code, 0) << verdict.output << verdict.messages << result.messages
                                   << result.output.substr(0, 500);
        seen_.insert(arguments.front());
    }

    /// Good films, and damaged ones of every kind that leaves a document.
    std::vector<std::string> Films() {
        std::vector<std::string> films = FilmsIn(KELVO_SOURCE_DIR "/tests/samples");
        const char* const chosen = std::getenv("KELVO_SAMPLES");
        const std::string beside = chosen != nullptr ? chosen : KELVO_SAMPLES;
        if (fs::exists(beside)) std::ranges::copy(FilmsIn(beside), std::back_inserter(films));
        for (const char* const sample : {"square.kvf", "screen.kaf", "bells.kaf", "cut.kva"}) {
            const Bytes whole = ReadFile(Sample(sample));
            for (const std::size_t length : {std::size_t{0}, std::size_t{40}, std::size_t{1100},
                                             whole.size() / 2, whole.size() - 1}) {
                films.push_back(Path(std::to_string(length) + sample));
                WriteFile(films.back(), Bytes(whole.begin(),
                                              whole.begin() + static_cast<std::ptrdiff_t>(length)));
            }
        }
        films.push_back(Copy("cut.kva", "\xff\xfe.kva"));
        films.push_back(Path("missing.kva"));
        return films;
    }

    std::set<std::string> seen_; ///< commands
};

TEST_F(Schema, DescribesWhatEveryCommandPrintsOfGoodAndDamagedFilms) {
    std::vector<std::string> films = Films();
    for (const std::string command : {"info", "verify"}) {
        std::vector<std::string> arguments = {command, "--jsonl"};
        arguments.insert(arguments.end(), films.begin(), films.end());
        Expect(command, arguments);
        arguments[1] = "--json";
        Expect(command + "_list", arguments);
        Expect(command, {command, "--json", Sample("cut.kva")});
    }
    Expect("rebuild_list", {"rebuild", "--report", "--json", Sample("square.kvf"),
                            Sample("cut.kva"), Path("missing.kva")});
    Expect("rebuild", {"rebuild", "--salvage", "--json", Sample("cut.kva"), "-o", Path("m.kva")});
    for (const char* const file : {"square.kvf", "screen.kaf", "bells.kaf"})
        Expect("frames", {"frames", Sample(file), "--json"});
    Expect("types", {"types", "--json"});
    ASSERT_EQ(RunTool({"mux", Sample("screen.kaf"), Sample("square.kvf"), Path("film.kva")}).code,
              0);
    const std::string film = Path("film.kva");
    Expect("convert", {"convert", "--json", film, "c.kva", "--type", "9"});
    Expect("convert", {"convert", "--json", Sample("screen.kaf"), "c.kaf", "--type", "best"});
    Expect("cut", {"cut", "--json", film, "cut.kva", "--range", "10f-20f"});
    Expect("join", {"join", "--json", film, film, "-o", "join.kva"});
    for (const char* const output : {"e.mkv", "e.wav", "e.y4m"})
        Expect("export", {"export", "--json", film, output});
    Expect("import", {"import", "--json", "e.mkv", "i.kva"});
    Expect("link", {"link", "--check", "--json", Sample("square.kvf"), Sample("screen.kaf")});

    // A command that is added has its document described, too.
    std::istringstream overview(RunTool({"help"}).output);
    bool is_list = false;
    for (std::string line; std::getline(overview, line);) {
        is_list = is_list || line.starts_with("Subcommands:");
        if (!is_list || !line.starts_with("  ")) continue;
        const std::string command = line.substr(2, line.find(' ', 2) - 2);
        if (command.empty()) continue;
        const std::string help = RunTool({"help", command}).output;
        EXPECT_TRUE(seen_.contains(command) || help.find(" --json") == std::string::npos)
            << command << " has no document in this test";
    }
    EXPECT_GE(seen_.size(), 5U);
}

TEST_F(Schema, RefusesWhatItDoesNotDescribe) {
    const std::string sound = R"({"schema": 1, "file": "a", "intact": true, "problem_count": 0,)";
    const auto verdict = [this](const std::string& definition, const std::string& document) {
        return Validate(definition, document, Path("documents")).code;
    };
    EXPECT_EQ(verdict("verify", sound + R"("problems": []})"), 0);
    EXPECT_EQ(verdict("verify", sound + R"("problems": [], "new": 1})"), 1);
    EXPECT_EQ(verdict("verify", sound + R"("problems": [{"code": "fire"}]})"), 1);
    EXPECT_EQ(verdict("verify", sound + "}"), 1);
    EXPECT_EQ(verdict("verify", ""), 1);
    EXPECT_EQ(verdict("nothing", sound + R"("problems": []})"), 1);
}

} // namespace

} // namespace kelvo::test
