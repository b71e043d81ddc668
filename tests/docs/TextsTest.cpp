// The table of the player's texts against the files that it names.

#include "tests/docs/Markdown.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

namespace kelvo::docs {
namespace {

/// A source as the compiler reads it: texts that go on in the next line are one.
std::string JoinedText(const std::string& file) {
    static const std::regex kGoesOn("\"\\s*\n\\s*\"");
    return std::regex_replace(ReadText(std::filesystem::path(KELVO_SOURCE_DIR) / file), kGoesOn,
                              "");
}

/// Whether a string of the file begins with it, ends with it, or holds it as one of its lines or of
/// the parts of a filter.
bool Says(const std::string& file, const std::string& text) {
    for (std::size_t at = file.find(text); at != std::string::npos; at = file.find(text, at + 1)) {
        const std::size_t end = at + text.size();
        const char before = at == 0 ? '\0' : file[at - 1];
        const char after = end == file.size() ? '\0' : file[end];
        if (before == '"' || after == '"' || before == '|') return true;
    }
    return false;
}

TEST(Texts, StandWhereTheirTableSaysAndAreSeenByTests) {
    static const std::regex kRow(
        R"re(\| "(.+)" \| `(\w+)` \| `([\w./]+)` \| `(tests/[\w./]+)` \|)re");
    const auto path = std::filesystem::path(KELVO_SOURCE_DIR) / "docs" / "texts.md";
    int rows = 0;
    for (const Span& line : ReadDocument(path).text) {
        if (!line.text.starts_with("| \"")) continue;
        std::smatch row;
        ASSERT_TRUE(std::regex_match(line.text, row, kRow)) << line.line << ": " << line.text;
        ++rows;
        const std::string source = JoinedText(row[3]);
        EXPECT_TRUE(Says(source, row[1])) << row[3] << " does not say \"" << row[1] << '"';
        EXPECT_TRUE(Says(JoinedText(row[4]), row[1])) << row[4] << " does not see " << row[1];
        const bool is_resource = row[3].str().ends_with(".rc");
        EXPECT_TRUE(is_resource || source.find(row[2]) != std::string::npos)
            << row[3] << " is not of " << row[2];
    }
    EXPECT_GT(rows, 60) << "the table is not being read";
}

} // namespace
} // namespace kelvo::docs
