#pragma once
// A resource script cut into words, numbers, texts and signs: comments are gone, includes read,
// constants put in. What the words mean is the parser's business.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo::resource_compiler {

struct Place {
    std::string file;
    int line = 0;
};

struct ScriptError {
    Place place;
    std::string message;

    /// "file:line: message".
    [[nodiscard]] std::string Line() const {
        return place.file + ':' + std::to_string(place.line) + ": " + message;
    }
};

enum class TokenKind : std::uint8_t { End, Word, Number, Text, Sign };

struct Token {
    TokenKind kind = TokenKind::End;
    std::string text;         ///< UTF-8; of a text: with its escapes resolved
    std::string raw;          ///< of a text: as it is written (file names are taken so)
    std::uint32_t number = 0; ///< of a number
    bool wide = false;        ///< a number ending in L, a text beginning with L
    Place place;
};

struct Script {
    std::vector<Token> tokens;      ///< the last one is an End
    std::vector<std::string> files; ///< all that were read, the script first
    std::optional<ScriptError> error;
};

struct ScriptOptions {
    std::vector<std::string> include_folders; ///< searched after the including file's own
    std::vector<std::pair<std::string, std::string>> constants;
};

[[nodiscard]] Script ReadScript(const std::string& file, const ScriptOptions& options);

/// The whole file; nothing when it cannot be read.
[[nodiscard]] std::optional<std::string> ReadWholeFile(const std::string& file);

} // namespace kelvo::resource_compiler
