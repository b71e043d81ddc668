// The documents against the tree: what they name must be there. And the tree itself must name no
// place that only one machine has.

#include "tests/docs/Markdown.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::docs {
namespace {

namespace fs = std::filesystem;

const fs::path kTop = KELVO_SOURCE_DIR;

/// Every file of the tree, from its top; what builds and version control leave there is no part of
/// it.
const std::vector<fs::path>& Files() {
    static const std::vector<fs::path> files = [] {
        std::vector<fs::path> found;
        for (auto entry = fs::recursive_directory_iterator(kTop);
             entry != fs::recursive_directory_iterator(); ++entry) {
            const fs::path path = entry->path().lexically_relative(kTop);
            if (entry->is_directory()) {
                if (path == ".git" || path == "build" ||
                    fs::exists(entry->path() / "CMakeCache.txt")) {
                    entry.disable_recursion_pending();
                }
            } else {
                found.push_back(path);
            }
        }
        return found;
    }();
    return files;
}

const std::vector<Document>& Documents() {
    static const std::vector<Document> documents = [] {
        std::vector<Document> found;
        for (const fs::path& file : Files()) {
            if (file.extension() == ".md") found.push_back(ReadDocument(kTop / file));
        }
        return found;
    }();
    return documents;
}

std::string Where(const Document& document, int line) {
    return document.path.lexically_relative(kTop).string() + ":" + std::to_string(line);
}

/// The targets that any folder declares.
const std::set<std::string>& Targets() {
    static const std::set<std::string> targets = [] {
        static const std::regex kTarget("kelvo_(?:library|executable|test|benchmark)\\((\\w+)");
        std::set<std::string> found;
        for (const fs::path& file : Files()) {
            if (file.filename() != "CMakeLists.txt") continue;
            const std::string text = ReadText(kTop / file);
            for (std::sregex_iterator match(text.begin(), text.end(), kTarget), end; match != end;
                 ++match) {
                found.insert((*match)[1].str());
            }
        }
        return found;
    }();
    return targets;
}

bool PresetExists(const std::string& name) {
    static const std::string presets = ReadText(kTop / "CMakePresets.json");
    return presets.find("\"name\": \"" + name + "\"") != std::string::npos;
}

/// "build/PRESET" or "build/PRESET/folder/target".
bool BuildPathExists(const fs::path& path) {
    std::vector<std::string> parts;
    for (const fs::path& part : path)
        parts.push_back(part.string());
    if (parts.size() < 2 || !PresetExists(parts[1])) return false;
    if (parts.size() == 2) return true;
    fs::path folder;
    for (std::size_t i = 2; i + 1 < parts.size(); ++i)
        folder /= parts[i];
    return fs::exists(kTop / folder / "CMakeLists.txt") && Targets().contains(parts.back());
}

bool PathExists(const std::string& text) {
    const fs::path path = fs::path(text).lexically_normal();
    if (path.string().starts_with("build/")) return BuildPathExists(path);
    if (fs::exists(kTop / path)) return true;
    // A file that is named without its folder.
    return !path.has_parent_path() && std::ranges::any_of(Files(), [&](const fs::path& file) {
        return file.filename() == path;
    });
}

bool LooksLikeAPath(const std::string& text) {
    static const std::regex kPath("(\\./)?[A-Za-z0-9_.-]+(/[A-Za-z0-9_.-]+)*/?");
    static const std::regex kSourceFile(".*\\.(md|txt|cpp|h|cmake|json|rc|ico|bmp|png)");
    if (!std::regex_match(text, kPath)) return false;
    return text.find('/') != std::string::npos || std::regex_match(text, kSourceFile);
}

TEST(Documents, NamePathsThatExist) {
    std::size_t seen = 0;
    for (const Document& document : Documents()) {
        for (const Span& code : document.code) {
            if (!LooksLikeAPath(code.text)) continue;
            ++seen;
            EXPECT_TRUE(PathExists(code.text)) << Where(document, code.line) << ": " << code.text;
        }
        for (const Span& link : document.links) {
            ++seen;
            const std::string target = link.text.substr(0, link.text.find('#'));
            EXPECT_TRUE(fs::exists(document.path.parent_path() / target))
                << Where(document, link.line) << ": " << link.text;
        }
    }
    EXPECT_GT(seen, 50U) << "the documents are not being read";
}

/// What a command prints.
std::string OutputOf(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return output;
    std::array<char, 4096> piece{};
    while (const std::size_t count = fread(piece.data(), 1, piece.size(), pipe)) {
        output.append(piece.data(), count);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

const std::string& ToolHelp(const std::string& subcommand = "") {
    static std::map<std::string, std::string> helps;
    const auto [help, is_new] = helps.try_emplace(subcommand);
    if (is_new) help->second = OutputOf(std::string(KELVOTOOL) + " " + subcommand + " --help");
    return help->second;
}

bool Mentions(const std::string& help, const std::string& word) {
    return std::regex_search(help, std::regex("(^|[ ,\\n])" + word + "([ ,\\n]|$)"));
}

/// What is wrong with a command line of kelvotool; empty when nothing is.
std::string ToolComplaint(const std::vector<std::string>& words) {
    if (words.size() < 2) return "";
    std::string subcommand;
    if (!words[1].starts_with('-')) {
        subcommand = words[1];
        if (!std::regex_search(ToolHelp(), std::regex("\\n +" + subcommand + " "))) {
            return "kelvotool has no command " + subcommand;
        }
    }
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string word = words[i].substr(0, words[i].find_first_of("=]"));
        if (word.starts_with("[-")) continue;
        if (word.starts_with('-') && !Mentions(ToolHelp(subcommand), word) &&
            !Mentions(ToolHelp(), word)) {
            return "kelvotool " + subcommand + " has no option " + word;
        }
    }
    return "";
}

std::string BuildComplaint(const std::vector<std::string>& words) {
    bool targets_follow = false;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string& before = words[i - 1];
        if (words[i].starts_with('-')) {
            targets_follow = words[i] == "--target";
        } else if (targets_follow) {
            if (!Targets().contains(words[i])) return "there is no target " + words[i];
        } else if (before == "--preset" && !PresetExists(words[i])) {
            return "there is no preset " + words[i];
        } else if ((before == "--build" || before == "--test-dir") && words[i] != "DIR" &&
                   !PathExists(words[i])) {
            return "there is no " + words[i];
        }
    }
    return "";
}

std::string ScriptComplaint(const std::vector<std::string>& words) {
    const fs::path script = fs::path(words[0]).lexically_normal();
    if (script.string().starts_with("build/")) {
        return BuildPathExists(script) ? "" : "there is no " + script.string();
    }
    if (!fs::is_regular_file(kTop / script)) return "there is no " + script.string();
    if ((fs::status(kTop / script).permissions() & fs::perms::owner_exec) == fs::perms::none) {
        return script.string() + " is not executable";
    }
    const std::string text = ReadText(kTop / script);
    for (const std::string& word : words) {
        if (word.starts_with("--") && text.find(word) == std::string::npos) {
            return script.string() + " knows no " + word;
        }
    }
    return "";
}

/// @param all  whether every line is a command, whatever its first word is
std::string Complaint(const std::string& line, bool all) {
    std::vector<std::string> words = Words(line.substr(0, line.find(" #")));
    // What is set for one command stands before it.
    while (all && !words.empty() && words[0].find('=') != std::string::npos)
        words.erase(words.begin());
    if (words.empty() || words[0].starts_with('#')) return "";
    if (words[0] == "kelvotool") return ToolComplaint(words);
    if (words[0] == "cmake" || words[0] == "ctest") return BuildComplaint(words);
    if (words[0].starts_with("./") || words[0].starts_with("build/")) return ScriptComplaint(words);
    return all ? "nobody knows the command " + words[0] : "";
}

TEST(Documents, NameCommandsThatExist) {
    std::size_t seen = 0;
    for (const Document& document : Documents()) {
        for (const Span& code : document.code) {
            EXPECT_EQ(Complaint(code.text, false), "") << Where(document, code.line);
        }
        for (const Block& block : document.blocks) {
            if (block.info != "sh") continue;
            for (const std::string& line : block.lines) {
                ++seen;
                EXPECT_EQ(Complaint(line, true), "") << Where(document, block.line);
            }
        }
    }
    EXPECT_GE(seen, 5U) << "the documents are not being read";
}

// The checks above would be worth nothing if they found everything to be there.
TEST(Documents, AreNotBelievedBlindly) {
    EXPECT_TRUE(PathExists("container/ZFilekel.h"));
    EXPECT_FALSE(PathExists("container/NoSuchFile.h"));
    EXPECT_FALSE(PathExists("NoSuchFile.h"));
    EXPECT_TRUE(PathExists("build/bench/bench/media/media_bench"));
    EXPECT_FALSE(PathExists("build/bench/bench/media/no_such_bench"));
    EXPECT_FALSE(PathExists("build/nothing"));
    EXPECT_EQ(Complaint("./test --all", true), "");
    EXPECT_NE(Complaint("./test --none", true), "");
    EXPECT_NE(Complaint("./tests", true), "");
    EXPECT_EQ(Complaint("kelvotool frames FILE --track audio --json", true), "");
    EXPECT_NE(Complaint("kelvotool frames FILE --trick audio", true), "");
    EXPECT_NE(Complaint("kelvotool play FILE", true), "");
    EXPECT_EQ(Complaint("cmake --build build/bench --target media_bench", true), "");
    EXPECT_NE(Complaint("cmake --build build/bench --target nothing", true), "");
    EXPECT_NE(Complaint("cmake --preset nothing", true), "");
    EXPECT_NE(Complaint("make", true), "");
}

TEST(Documents, AskEachDecisionOnceInOneLine) {
    static const std::regex kDecision("- \\*\\*([^*]+)\\*\\* (\\S.*\\.)");
    std::set<std::string> questions;
    const Document document = ReadDocument(kTop / "docs/decisions.md");
    for (const Span& line : document.text) {
        if (line.text.empty() || line.text.starts_with('#') || questions.empty()) {
            if (!line.text.starts_with("- ")) continue; // title and introduction
        }
        std::smatch parts;
        if (!std::regex_match(line.text, parts, kDecision)) {
            ADD_FAILURE() << Where(document, line.line) << ": no question and choice";
            continue;
        }
        EXPECT_TRUE(questions.insert(parts[1].str()).second)
            << Where(document, line.line) << ": asked before";
    }
    EXPECT_GT(questions.size(), 10U);
}

bool IsText(const fs::path& file, const std::string& content) {
    return file.extension() != ".ico" && content.find('\0') == std::string::npos;
}

bool IsWordCharacter(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

/// The first folder of an absolute path that begins at a "/" of the line; empty when none does.
std::string FirstFolderAt(const std::string& line, std::size_t slash) {
    if (slash > 0 && std::string_view(" \"'`(=<").find(line[slash - 1]) == std::string_view::npos) {
        return "";
    }
    const std::size_t end = line.find('/', slash + 1);
    if (end == std::string::npos || end + 1 >= line.size() || !IsWordCharacter(line[end + 1])) {
        return "";
    }
    const std::string folder = line.substr(slash + 1, end - slash - 1);
    const bool is_name =
        !folder.empty() && folder[0] != '.' && std::ranges::all_of(folder, [](char character) {
            return IsWordCharacter(character) || character == '.' || character == '-';
        });
    return is_name ? folder : "";
}

/// A path or a host that a line names and that only one machine, or somebody else, has.
std::string ForeignPlaceIn(const std::string& line) {
    // Folders that every system of this kind has, and names that stand for any folder.
    static const std::set<std::string> kKnown{"bin",   "dev",      "etc",    "lib", "proc",
                                              "run",   "sys",      "usr",    "var", "film",
                                              "films", "film.kva", "nowhere"};
    for (std::size_t slash = line.find('/'); slash != std::string::npos;
         slash = line.find('/', slash + 1)) {
        const std::string folder = FirstFolderAt(line, slash);
        if (!folder.empty() && !kKnown.contains(folder) && !fs::exists(kTop / folder)) {
            return "/" + folder;
        }
    }
    static const std::regex kUrl("[a-z]+://([A-Za-z0-9.-]+\\.[a-z]+)");
    static const std::regex kHost(
        "\\b(?:deb|cdn|dl|download|ftp|mirror|packages|proxy|registry|security)"
        "\\.[a-z0-9.-]+\\.(?:com|dev|io|net|org)\\b");
    std::smatch match;
    const bool may_be_url = line.find("://") != std::string::npos;
    // Names of formats, which nobody asks for over a network.
    static const std::set<std::string> kNameSpaces{"www.w3.org", "json-schema.org"};
    if (may_be_url && std::regex_search(line, match, kUrl) && !kNameSpaces.contains(match[1])) {
        return match.str();
    }
    const bool may_be_host = std::ranges::any_of(
        std::array{".com", ".dev", ".io", ".net", ".org"},
        [&](const char* ending) { return line.find(ending) != std::string::npos; });
    return may_be_host && std::regex_search(line, match, kHost) ? match.str() : "";
}

TEST(Tree, NamesNoPlaceThatOthersDoNotHave) {
    EXPECT_EQ(ForeignPlaceIn("cd /usr/share/fonts; see \"/docs/format.md\" and either/or"), "");
    EXPECT_NE(ForeignPlaceIn("see /"
                             "elsewhere/kelvo/run"),
              "");
    EXPECT_NE(ForeignPlaceIn("http"
                             "://example.com/list"),
              "");
    EXPECT_NE(ForeignPlaceIn("deb"
                             ".example.org"),
              "");
    for (const fs::path& file : Files()) {
        const std::string content = ReadText(kTop / file);
        if (!IsText(file, content)) continue;
        std::istringstream lines(content);
        int number = 0;
        for (std::string line; std::getline(lines, line);) {
            ++number;
            EXPECT_EQ(ForeignPlaceIn(line), "") << file.string() << ":" << number;
        }
    }
}

} // namespace
} // namespace kelvo::docs
