#include "tools/resource_compiler/TokenCursor.h"

#include "tools/resource_compiler/StandardNames.h"

#include <algorithm>
#include <cctype>

namespace kelvo::resource_compiler {

namespace {

constexpr int kDeepestParentheses = 64;

std::string Shown(const Token& token) {
    switch (token.kind) {
    case TokenKind::End:
        return "the end of the script";
    case TokenKind::Text:
        return '"' + token.raw + '"';
    default:
        return token.text;
    }
}

} // namespace

TokenCursor::TokenCursor(const Script& script) : script_(script), error_(script.error) {
    end_ = script.tokens.back();
}

const Token& TokenCursor::Peek() const {
    return error_ ? end_ : script_.tokens[position_];
}

Token TokenCursor::Take() {
    const Token& token = Peek();
    if (token.kind != TokenKind::End) ++position_;
    return token;
}

bool TokenCursor::AcceptWord(std::string_view word) {
    if (Peek().kind != TokenKind::Word || !SameWord(Peek().text, word)) return false;
    Take();
    return true;
}

bool TokenCursor::AcceptSign(char sign) {
    if (Peek().kind != TokenKind::Sign || Peek().text.front() != sign) return false;
    Take();
    return true;
}

void TokenCursor::ExpectComma() {
    if (!AcceptSign(',')) Fail("a comma is missing before " + Shown(Peek()));
}

void TokenCursor::ExpectBegin() {
    if (!AcceptWord("BEGIN") && !AcceptSign('{')) Fail("BEGIN is missing before " + Shown(Peek()));
}

bool TokenCursor::AcceptEnd() {
    if (AcceptWord("END") || AcceptSign('}')) return true;
    if (AtEnd()) Fail("END is missing");
    return error_.has_value();
}

std::string TokenCursor::ExpectText() {
    if (Peek().kind != TokenKind::Text) {
        Fail("a text is wanted, not " + Shown(Peek()));
        return {};
    }
    return Take().text;
}

NumberOrText TokenCursor::ExpectNumberOrText() {
    if (Peek().kind == TokenKind::Text) return Take().text;
    return ExpectWord();
}

std::uint32_t TokenCursor::ExpectNumber() {
    std::uint32_t value = ExpectProduct();
    for (;;) {
        if (AcceptSign('+')) {
            value += ExpectProduct();
        } else if (AcceptSign('-')) {
            value -= ExpectProduct();
        } else if (AcceptSign('|')) {
            value |= ExpectProduct();
        } else if (AcceptSign('&')) {
            value &= ExpectProduct();
        } else {
            return value;
        }
    }
}

std::uint32_t TokenCursor::ExpectProduct() {
    std::uint32_t value = ExpectTerm();
    while (AcceptSign('*')) {
        value *= ExpectTerm();
    }
    return value;
}

std::uint32_t TokenCursor::ExpectTerm() {
    if (AcceptSign('-')) return 0U - ExpectTerm();
    if (AcceptSign('+')) return ExpectTerm();
    if (AcceptSign('~')) return ~ExpectTerm();
    if (AcceptSign('(')) {
        if (++depth_ > kDeepestParentheses) Fail("too many parentheses");
        const std::uint32_t value = ExpectNumber();
        --depth_;
        if (!AcceptSign(')')) Fail("a parenthesis is not closed");
        return value;
    }
    if (Peek().kind == TokenKind::Number) return Take().number;
    if (Peek().kind == TokenKind::Word) {
        if (const auto known = StandardValue(Peek().text)) {
            Take();
            return *known;
        }
        Fail("unknown name " + Peek().text);
        return 0;
    }
    Fail("a number is wanted, not " + Shown(Peek()));
    return 0;
}

std::uint16_t TokenCursor::ExpectWord() {
    const Place place = Peek().place;
    const std::uint32_t value = ExpectNumber();
    if (value > 0xFFFFU && value < 0xFFFF8000U) {
        FailAt(place, "the number does not fit into 16 bits");
    }
    return static_cast<std::uint16_t>(value);
}

std::uint32_t TokenCursor::ExpectStyle(std::uint32_t initial) {
    std::uint32_t style = initial;
    do {
        if (AcceptWord("NOT")) {
            style &= ~ExpectProduct();
        } else {
            style |= ExpectProduct();
        }
    } while (AcceptSign('|'));
    return style;
}

bool TokenCursor::AtNumber() const {
    const Token& token = Peek();
    if (token.kind == TokenKind::Word) return StandardValue(token.text).has_value();
    return token.kind == TokenKind::Number ||
           (token.kind == TokenKind::Sign &&
            std::string_view{"-+~("}.find(token.text) != std::string_view::npos);
}

void TokenCursor::Fail(const std::string& message) {
    FailAt(Peek().place, message);
}

void TokenCursor::FailAt(const Place& place, const std::string& message) {
    if (!error_) error_ = ScriptError{place, message};
}

bool SameWord(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, [](char x, char y) {
        return std::toupper(static_cast<unsigned char>(x)) ==
               std::toupper(static_cast<unsigned char>(y));
    });
}

} // namespace kelvo::resource_compiler
