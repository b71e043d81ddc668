#include "tests/docs/Markdown.h"

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace kelvo::docs {

namespace {

void CollectMatches(const std::string& line, int number, const std::regex& pattern,
                    std::vector<Span>& found) {
    for (std::sregex_iterator match(line.begin(), line.end(), pattern), end; match != end;
         ++match) {
        found.push_back({(*match)[1].str(), number});
    }
}

/// Reads the notation from left to right; a group calls itself.
class ByteReading {
public:
    explicit ByteReading(std::string_view notation) : rest_(notation) {}

    Bytes ReadSequence() {
        Bytes bytes;
        for (SkipBlanks(); !rest_.empty() && rest_.front() != ')'; SkipBlanks()) {
            const Bytes item = ReadItem();
            if (failed_) return {};
            for (std::size_t times = ReadTimes(); times > 0; --times) {
                bytes.insert(bytes.end(), item.begin(), item.end());
            }
        }
        return bytes;
    }
    bool ReadAll() const { return !failed_ && rest_.empty(); }

private:
    void SkipBlanks() {
        while (!rest_.empty() && rest_.front() == ' ')
            rest_.remove_prefix(1);
    }
    Bytes ReadItem() {
        if (rest_.front() == '(') {
            rest_.remove_prefix(1);
            Bytes group = ReadSequence();
            if (rest_.empty()) return Fail();
            rest_.remove_prefix(1);
            return group;
        }
        unsigned value = 0;
        const auto [end, error] = std::from_chars(
            rest_.data(), rest_.data() + std::min<std::size_t>(2, rest_.size()), value, 16);
        if (error != std::errc() || end != rest_.data() + 2) return Fail();
        rest_.remove_prefix(2);
        return {static_cast<std::uint8_t>(value)};
    }
    std::size_t ReadTimes() {
        if (rest_.empty() || rest_.front() != '*') return 1;
        rest_.remove_prefix(1);
        std::size_t times = 0;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), times);
        failed_ = failed_ || error != std::errc() || times == 0 || times > 100'000;
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return failed_ ? 0 : times;
    }
    Bytes Fail() {
        failed_ = true;
        return {};
    }

    std::string_view rest_;
    bool failed_ = false;
};

} // namespace

std::string ReadText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

Document ReadDocument(const std::filesystem::path& path) {
    static const std::regex kCode("`([^`]+)`");
    static const std::regex kLink("\\]\\(([^)]+)\\)");
    Document document{.path = path, .blocks = {}, .code = {}, .links = {}, .text = {}};
    std::istringstream text(ReadText(path));
    bool in_block = false;
    int number = 0;
    for (std::string line; std::getline(text, line);) {
        ++number;
        if (line.starts_with("```")) {
            in_block = !in_block;
            if (in_block) {
                document.blocks.push_back({.info = line.substr(3), .line = number, .lines = {}});
            }
        } else if (in_block) {
            document.blocks.back().lines.push_back(line);
        } else {
            document.text.push_back({line, number});
            CollectMatches(line, number, kCode, document.code);
            CollectMatches(line, number, kLink, document.links);
        }
    }
    EXPECT_FALSE(in_block) << path << ": the last block has no end";
    return document;
}

std::vector<std::string> Words(std::string_view text) {
    std::istringstream stream{std::string(text)};
    return {std::istream_iterator<std::string>(stream), {}};
}

Bytes BytesFrom(std::string_view notation) {
    ByteReading reading(notation);
    Bytes bytes = reading.ReadSequence();
    EXPECT_TRUE(reading.ReadAll()) << "these are no bytes: " << notation;
    return bytes;
}

std::string Notation(const Bytes& bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size();) {
        std::size_t times = 1;
        while (i + times < bytes.size() && bytes[i + times] == bytes[i])
            ++times;
        if (times < 4) times = 1;
        std::array<char, 32> item{};
        std::snprintf(item.data(), item.size(), times > 1 ? "%02X*%zu " : "%02X ", bytes[i], times);
        text += item.data();
        i += times;
    }
    return text;
}

} // namespace kelvo::docs
