#pragma once
// The documents as the tests read them: fenced blocks, and code spans within the text. Also the
// notation for bytes that the examples use.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::docs {

using Bytes = std::vector<std::uint8_t>;

/// A piece of a document and the number of its (first) line, from 1.
struct Span {
    std::string text;
    int line = 0;
};

/// What stands between two fences.
struct Block {
    std::string info; ///< behind the opening fence
    int line = 0;     ///< of the opening fence
    std::vector<std::string> lines;
};

struct Document {
    std::filesystem::path path;
    std::vector<Block> blocks;
    std::vector<Span> code;  ///< between single backticks, outside of blocks
    std::vector<Span> links; ///< targets of links and pictures
    std::vector<Span> text;  ///< lines outside of blocks
};

Document ReadDocument(const std::filesystem::path& path);
std::string ReadText(const std::filesystem::path& path);
std::vector<std::string> Words(std::string_view text);

/// "0A 00*3 (01 02)*2" as bytes; a failed assertion when it is none of that.
Bytes BytesFrom(std::string_view notation);
/// Bytes in the same notation, so that a failed comparison can be read.
std::string Notation(const Bytes& bytes);

} // namespace kelvo::docs
