// What a person types: names, options, wrong use, and where the answers go.

#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

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
        {"info", "a", "b"},
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
    for (const char* command : {"info", "frames", "verify", "rebuild", "convert"}) {
        EXPECT_THAT(RunTool({"--help"}).output, HasSubstr(command));
        const ToolResult help = RunTool({command, "-h"});
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
