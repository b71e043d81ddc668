// The manual pages against the program: every option of both, and examples that work.

#include "tests/tools/kelvotool/ToolRun.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace kelvo::test {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const std::string kToolPage = KELVO_BINARY_DIR "/packaging/man/kelvotool.1";
const std::string kPlayerPage = KELVO_SOURCE_DIR "/packaging/man/kelvo.1";
const std::string kFormatsPage = KELVO_SOURCE_DIR "/packaging/man/kelvo-formats.5";

std::string TextOf(const std::string& name) {
    const Bytes bytes = ReadFile(name);
    return {bytes.begin(), bytes.end()};
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

using Options = std::set<std::string>;

/// "-x" and "--xyz" at the start of the lines of a help page, common ones apart.
struct HelpOptions {
    Options own;
    Options common;
};

HelpOptions OptionsOfHelp(const std::string& help) {
    static const std::regex kName("--?[A-Za-z0-9][A-Za-z0-9-]*");
    HelpOptions options;
    bool is_common = false;
    for (const std::string& line : LinesOf(help)) {
        is_common = is_common || line == "Common options:";
        if (!line.starts_with("  -")) continue;
        const std::string names = line.substr(2, line.find(' ', 2) - 2);
        for (std::sregex_iterator name(names.begin(), names.end(), kName), end; name != end; ++name)
            (is_common ? options.common : options.own).insert(name->str());
    }
    return options;
}

/// Options that the page lists, by the heading under which they stand.
std::map<std::string, Options> OptionsOfPage() {
    static const std::regex kFlag("Fl ([A-Za-z0-9-]+)");
    std::map<std::string, Options> options;
    std::string heading;
    for (std::string line : LinesOf(TextOf(kToolPage))) {
        line = std::regex_replace(line, std::regex(R"(\\-)"), "-");
        if (line.starts_with(".Sh ")) heading.clear();
        if (line.starts_with(".Ss ")) heading = line.substr(4);
        if (heading.empty() || (!line.starts_with(".It Fl") && !line.starts_with(".Fl"))) continue;
        for (std::sregex_iterator flag(line.begin(), line.end(), kFlag), end; flag != end; ++flag)
            options[heading].insert("-" + (*flag)[1].str());
    }
    return options;
}

std::vector<std::string> Commands() {
    std::vector<std::string> commands;
    bool is_list = false;
    for (const std::string& line : LinesOf(RunTool({"help"}).output)) {
        if (is_list && line.starts_with("  "))
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
        is_list = is_list || line.starts_with("Subcommands:");
    }
    return commands;
}

TEST(ManPages, NameEveryOptionOfTheProgramAndNoOther) {
    const auto page = OptionsOfPage();
    const auto commands = Commands();
    EXPECT_GE(commands.size(), 11U);
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        const auto listed = page.find("kelvotool " + command);
        ASSERT_NE(listed, page.end()) << "the page does not know it";
        const HelpOptions help = OptionsOfHelp(RunTool({"help", command}).output);
        Options expected = help.own;
        for (const char* name : {"--json", "--jsonl", "--force", "--output", "--jobs"}) {
            if (help.common.contains(name)) expected.insert(name);
        }
        EXPECT_EQ(listed->second, expected);
    }
    EXPECT_EQ(page.size(), commands.size() + 1) << "the page knows a command too many";
    const HelpOptions overview = OptionsOfHelp(RunTool({"--help"}).output);
    Options common = overview.own;
    common.insert(overview.common.begin(), overview.common.end());
    EXPECT_EQ(page.at("Common options"), common);
}

TEST(ManPages, ArePagesWithoutComplaint) {
    const std::map<std::string, std::string> pages = {
        {"kelvotool 1", kToolPage}, {"kelvo 1", kPlayerPage}, {"kelvo-formats 5", kFormatsPage}};
    static const std::regex kReference("Xr ([a-z-]+ [0-9])");
    for (const auto& [name, page] : pages) {
        const std::string text = TextOf(page);
        EXPECT_THAT(text, HasSubstr(".Sh EXIT STATUS\n")) << page;
        EXPECT_THAT(text, HasSubstr(".Sh EXAMPLES\n")) << page;
        for (std::sregex_iterator found(text.begin(), text.end(), kReference), end; found != end;
             ++found)
            EXPECT_TRUE(pages.contains((*found)[1].str())) << found->str();
        const ToolResult lint = RunProgram("/usr/bin/mandoc", {"-T", "lint", page});
        for (const std::string& line : LinesOf(lint.output + lint.messages)) {
            // It looks for the other pages where they are not installed yet.
            EXPECT_THAT(line, HasSubstr("referenced manual not found")) << page;
        }
    }
}

class ManPageFolder : public ToolTest {};

TEST_F(ManPageFolder, ShowExamplesThatWork) {
    Copy("square.kvf", "PICTURE.kvf");
    Copy("screen.kaf", "SOUND.kaf");
    ASSERT_EQ(RunTool({"mux", Path("SOUND.kaf"), Path("PICTURE.kvf"), Path("FILM.kva")}).code, 0);
    fs::create_directories(Path("FOLDER/old"));
    fs::copy(Path("FILM.kva"), Path("FOLDER/old/a film.kva"));
    std::size_t tried = 0;
    for (const std::string& page : {kToolPage, kFormatsPage}) {
        bool is_example = false;
        for (const std::string& line : LinesOf(TextOf(page))) {
            if (line.starts_with(".Sh ")) is_example = line == ".Sh EXAMPLES";
            if (!is_example || !line.starts_with(".Dl ")) continue;
            const std::string command =
                std::regex_replace(line.substr(4), std::regex(R"(\\-)"), "-");
            const std::string folder = fs::path(KELVOTOOL).parent_path().string();
            const ToolResult result = RunProgram(
                "/bin/sh", {"-c", "PATH=\"$0:$PATH\"; " + command, folder}, {.folder = Folder()});
            EXPECT_EQ(result.code, 0) << command << "\n" << result.messages;
            EXPECT_EQ(result.messages, "") << command;
            ++tried;
        }
    }
    EXPECT_GE(tried, 8U);
}

} // namespace

} // namespace kelvo::test
