#pragma once
// Cuts the bytes of a rich-text file into tokens, one at a time, without copying and without ever
// reading beyond them. Knows the syntax only, no control word but \bin.

#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo::desktop {

enum class RtfTokenKind : std::uint8_t {
    End,        ///< of the bytes
    GroupStart, ///< {
    GroupEnd,   ///< }
    Word,       ///< \name, \nameN
    Symbol,     ///< \ and one character that is no letter
    HexByte,    ///< \'hh
    Text,       ///< bytes as they stand, line ends left out
    Binary,     ///< \binN and what it holds, cut where the bytes end
};

struct RtfToken {
    RtfTokenKind kind = RtfTokenKind::End;
    std::string_view text{}; ///< of a word its name, of a symbol its character, of a text its bytes
    bool has_number = false;
    std::int32_t number = 0; ///< of a word, cut to 32 bits; of a hex byte its value
};

class RtfTokenizer {
public:
    explicit RtfTokenizer(std::span<const std::uint8_t> bytes)
        : bytes_(reinterpret_cast<const char*>(bytes.data()), bytes.size()) {}

    /// The next token; its views live as long as the bytes. After the end: End, again and again.
    RtfToken Next();

private:
    bool AtEnd() const { return position_ >= bytes_.size(); }
    RtfToken ReadControl();
    RtfToken ReadHexByte();
    RtfToken ReadWord();
    RtfToken ReadText();
    std::int32_t ReadNumber();
    void SkipBinary(RtfToken& token);

    std::string_view bytes_;
    std::size_t position_ = 0;
};

} // namespace kelvo::desktop
