#pragma once
// Walks over the tokens of a script. The first failure sticks: from then on every token is the end,
// so a parser reads straight down, its loops end, and who started it asks for the error once.

#include "tools/resource_compiler/ScriptTokens.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kelvo::resource_compiler {

/// A resource's type or name, a class or a title: a number or a text.
using NumberOrText = std::variant<std::uint16_t, std::string>;

class TokenCursor {
public:
    /// The script must live as long.
    explicit TokenCursor(const Script& script);

    [[nodiscard]] const Token& Peek() const;
    Token Take();
    [[nodiscard]] bool AtEnd() const { return Peek().kind == TokenKind::End; }

    /// Takes the word (case is not looked at) or the sign if it comes next.
    bool AcceptWord(std::string_view word);
    bool AcceptSign(char sign);
    void AcceptComma() { AcceptSign(','); }
    void ExpectComma();

    /// BEGIN or {, END or }.
    void ExpectBegin();
    [[nodiscard]] bool AcceptEnd();

    /// A text, its escapes resolved.
    std::string ExpectText();
    NumberOrText ExpectNumberOrText();

    /// Numbers and known names with + - | & * ~ and parentheses, 32 bits that wrap.
    std::uint32_t ExpectNumber();
    /// A number of at most 16 bits; small negative ones, such as an id of -1, are taken, too.
    std::uint16_t ExpectWord();
    /// Terms joined by |, each added to `initial`, or taken from it after NOT.
    std::uint32_t ExpectStyle(std::uint32_t initial);
    /// Whether a number can begin here.
    [[nodiscard]] bool AtNumber() const;

    void Fail(const std::string& message);
    void FailAt(const Place& place, const std::string& message);
    [[nodiscard]] const std::optional<ScriptError>& Failure() const { return error_; }

private:
    std::uint32_t ExpectTerm();
    std::uint32_t ExpectProduct();

    const Script& script_;
    std::size_t position_ = 0;
    Token end_;
    std::optional<ScriptError> error_;
    int depth_ = 0;
};

/// Equal without regard to the case of ASCII letters.
[[nodiscard]] bool SameWord(std::string_view a, std::string_view b);

} // namespace kelvo::resource_compiler
