// What a person types: names, options, wrong use, and where the answers go.

#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

namespace kelvo::test {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class CommandLine : public ToolTest {};

TEST_F(CommandLine, NamesCountFromTheWorkingDirectoryAndMayBeAnything) {
    for (const char* name : {"plain.kvf", "two words.kvf", "perché.kvf", "it's \"it\".kvf",
                             "[a,b].kvf", "{x}.kvf", "-dash.kvf", "100%.kvf", "\xff\xfe.kvf"}) {
        SCOPED_TRACE(name);
        Copy("square.kvf", name);
        const ToolResult result = RunTool({"verify", "--", name}, {.folder = Folder()});
        EXPECT_EQ(result.code, 0) << result.messages;
        EXPECT_EQ(result.output, std::string(name) + ": sound\n");
        const ToolResult info = RunTool({"info", "--json", "--", name}, {.folder = Folder()});
        EXPECT_EQ(info.code, 0);
        EXPECT_FALSE(nlohmann::json::parse(info.output, nullptr, false).is_discarded());
        ASSERT_EQ(
            RunTool({"convert", "--type", "9", "--", name, "out.kvf"}, {.folder = Folder()}).code,
            0);
        std::filesystem::remove(Path("out.kvf"));
    }
    EXPECT_EQ(RunTool({"info", "PLAIN.KVF"}, {.folder = Folder()}).code, 0);
    EXPECT_EQ(RunTool({"info", "./plain.kvf"}, {.folder = Folder()}).code, 0);
}

TEST_F(CommandLine, ControlCharactersOfANameDoNotReachTheTerminal) {
    const std::string name = "a\x1b[31m\nb.kvf";
    const ToolResult result = RunTool({"info", name}, {.folder = Folder()});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.messages, "kelvotool: a?[31m?b.kvf: there is no such file\n");
}

TEST_F(CommandLine, WrongUseIsOneLineAndExitCode2) {
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"play"},
        {"--loud"},
        {"info"},
        {"info", "--json", "--jsonl", "a"},
        {"verify", "-o", "x", "a"},
        {"rebuild", "-r", "a"},
        {"verify"},
        {"frames", Sample("cut.kva")},
        {"frames", Sample("cut.kva"), "--track", "smell"},
        {"frames", Sample("square.kvf"), "--track", "audio"},
        {"convert", Sample("square.kvf"), Path("a.kvf"), "--type", "nine"},
        {"rebuild"},
    };
    for (const auto& arguments : wrong) {
        const ToolResult result = RunTool(arguments);
        SCOPED_TRACE(result.messages);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.messages, StartsWith("kelvotool: "));
        EXPECT_EQ(std::ranges::count(result.messages, '\n'), 1);
    }
}

TEST_F(CommandLine, HelpAndVersionAreResults) {
    for (const char* command : {"info", "frames", "verify", "rebuild", "convert", "types"}) {
        EXPECT_THAT(RunTool({"--help"}).output, HasSubstr(command));
        const ToolResult help = RunTool({command, "-h"});
        EXPECT_EQ(help.output, RunTool({"help", command}).output);
        EXPECT_EQ(help.code, 0);
        EXPECT_THAT(help.output, HasSubstr(command));
        EXPECT_EQ(help.messages, "");
    }
    EXPECT_THAT(RunTool({"-V"}).output, StartsWith("kelvotool "));
}

TEST_F(CommandLine, VerifyDoesEveryFileAndGivesTheWorstCode) {
    const std::string good = Sample("square.kvf");
    const std::string damaged = Sample("cut.kva");
    EXPECT_EQ(RunTool({"verify", good, good}).code, 0);
    const ToolResult result = RunTool({"verify", damaged, good});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.output, HasSubstr(good + ": sound\n"));
    EXPECT_EQ(RunTool({"verify", Path("none.kvf"), good, damaged}).code, 2);
}

TEST_F(CommandLine, FilesComeFromFoldersAndListsAndAPairIsOneFilm) {
    std::filesystem::create_directories(Path("films/old"));
    Copy("square.kvf", "films/square.kvf");
    Copy("square.kvf", "films/old/screen.kvf");
    Copy("screen.kaf", "films/old/screen.kaf");
    WriteFile(Path("films/notes.txt"), {'x'});
    const auto names = [this](const std::vector<std::string>& arguments) {
        const ToolResult result = RunTool(arguments, {.folder = Folder()});
        EXPECT_EQ(result.code, 0) << result.messages;
        std::vector<std::string> files;
        for (std::istringstream lines(result.output); lines.good();) {
            std::string line;
            if (std::getline(lines, line) && !line.empty())
                files.push_back(nlohmann::json::parse(line).at("file"));
        }
        return files;
    };
    const std::vector<std::string> both = {"films/old/screen.kvf", "films/square.kvf"};
    EXPECT_EQ(names({"info", "-r", "films", "--jsonl"}), both);
    const std::string list = std::string("films/old") + '\0' + "films/square.kvf";
    WriteFile(Path("list"), {list.begin(), list.end()});
    EXPECT_EQ(names({"verify", "-r", "-0", "list", "--jsonl"}), both);
    const auto pair = nlohmann::json::parse(
        RunTool({"info", "--json", Path("films/old/screen.kaf"), Path("films/old/screen.kvf")})
            .output);
    EXPECT_EQ(pair.at("files").size(), 1U);
    EXPECT_TRUE(pair.at("files").at(0).contains("a"));
    EXPECT_TRUE(pair.at("files").at(0).contains("v"));
    EXPECT_EQ(RunTool({"verify", "-0", Path("none")}).code, 2);
    EXPECT_EQ(RunTool({"verify", Path("films")}).code, 2);
}

TEST_F(CommandLine, DocumentsNameProblemsAndNamesThatAreNoText) {
    const std::string name = Copy("cut.kva", "\xff.kva");
    const ToolResult result = RunTool({"verify", name, "--json"});
    EXPECT_EQ(result.code, 1);
    const auto document = nlohmann::json::parse(result.output);
    EXPECT_FALSE(document.at("intact"));
    EXPECT_TRUE(document.contains("file_base64"));
    EXPECT_EQ(document.at("problems").at(0).at("code"), "directory-damaged");
    const ToolResult progress = RunTool({"verify", name, "-q", "--color", "always"});
    EXPECT_EQ(progress.output, "");
    EXPECT_THAT(progress.messages, StartsWith("\033[31mkelvotool:"));
}

TEST_F(CommandLine, CompletionScriptsNameEveryOptionOfHelp) {
    for (const char* shell : {"bash", "zsh", "fish"}) {
        const std::string script = RunTool({"completion", shell}).output;
        for (const char* word : {"files0-from", "key-interval", "verify", "audio-type"})
            EXPECT_THAT(script, HasSubstr(word)) << shell;
    }
    WriteFile(Path("script"), [] {
        const std::string script = RunTool({"completion", "bash"}).output;
        return Bytes(script.begin(), script.end());
    }());
    const std::string use = "source " + Path("script") +
                            "; COMP_WORDS=(kelvotool verify --files); COMP_CWORD=2; _kelvotool; "
                            "echo ${COMPREPLY[*]}";
    EXPECT_EQ(RunProgram("/bin/bash", {"-c", use}).output, "--files0-from\n");
}

TEST_F(CommandLine, OutputThatCannotBeWrittenIsNotSuccess) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"info", Sample("square.kvf")},
          {"frames", Sample("square.kvf"), "--json"},
          {"verify", Sample("square.kvf")},
          {"--help"}}) {
        const ToolResult result = RunTool(arguments, {.output_file = "/dev/full"});
        EXPECT_EQ(result.code, 2);
        EXPECT_THAT(result.messages, HasSubstr("standard output"));
    }
}

TEST_F(CommandLine, PlainInfoTellsWhatAPersonAsksFirst) {
    const ToolResult result = RunTool({"info", Sample("square.kvf")});
    EXPECT_EQ(result.code, 0);
    for (const char* text :
         {"type         8 (Vid: QTrx+cmprs Random Read Access)",
          "128 x 96 pixels of 16 bits, 10 images a second", "60, 0:06.0", "key interval 15"}) {
        EXPECT_THAT(result.output, HasSubstr(text));
    }
}

} // namespace

} // namespace kelvo::test
