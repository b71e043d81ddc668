#include "platform/desktop/rich_text/RtfTokens.h"

#include <algorithm>
#include <limits>

namespace kelvo::desktop {
namespace {

constexpr std::size_t kLongestWord = 32; ///< letters; nothing that means something is longer

bool IsLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

int HexValue(char character) {
    if (IsDigit(character)) return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

/// Line ends and zero bytes mean nothing between the others.
bool IsLayout(char character) {
    return character == '\r' || character == '\n' || character == '\0';
}

bool EndsText(char character) {
    return character == '\\' || character == '{' || character == '}' || IsLayout(character);
}

} // namespace

RtfToken RtfTokenizer::Next() {
    while (!AtEnd() && IsLayout(bytes_[position_]))
        ++position_;
    if (AtEnd()) return {};
    switch (bytes_[position_]) {
    case '{':
        ++position_;
        return {.kind = RtfTokenKind::GroupStart};
    case '}':
        ++position_;
        return {.kind = RtfTokenKind::GroupEnd};
    case '\\':
        ++position_;
        return ReadControl();
    default:
        return ReadText();
    }
}

RtfToken RtfTokenizer::ReadControl() {
    if (AtEnd()) return {};
    if (IsLetter(bytes_[position_])) return ReadWord();
    const RtfToken symbol{.kind = RtfTokenKind::Symbol, .text = bytes_.substr(position_, 1)};
    ++position_;
    return symbol.text == "'" ? ReadHexByte() : symbol;
}

RtfToken RtfTokenizer::ReadHexByte() {
    const std::string_view digits = bytes_.substr(position_, 2);
    const int high = digits.size() == 2 ? HexValue(digits[0]) : -1;
    const int low = digits.size() == 2 ? HexValue(digits[1]) : -1;
    // What is not two digits is no byte: its characters are read as whatever they are.
    if (high < 0 || low < 0) return {.kind = RtfTokenKind::Text, .text = {}};
    position_ += 2;
    return {
        .kind = RtfTokenKind::HexByte, .text = {}, .has_number = true, .number = high * 16 + low};
}

RtfToken RtfTokenizer::ReadWord() {
    const std::size_t start = position_;
    while (!AtEnd() && IsLetter(bytes_[position_]))
        ++position_;
    RtfToken token{.kind = RtfTokenKind::Word};
    token.text = bytes_.substr(start, std::min(position_ - start, kLongestWord + 1));
    const bool negative = !AtEnd() && bytes_[position_] == '-' && position_ + 1 < bytes_.size() &&
                          IsDigit(bytes_[position_ + 1]);
    if (negative) ++position_;
    if (!AtEnd() && IsDigit(bytes_[position_])) {
        token.has_number = true;
        token.number = negative ? -ReadNumber() : ReadNumber();
    }
    if (!AtEnd() && bytes_[position_] == ' ') ++position_;
    if (token.text == "bin") SkipBinary(token);
    return token;
}

std::int32_t RtfTokenizer::ReadNumber() {
    constexpr std::int64_t kGreatest = std::numeric_limits<std::int32_t>::max();
    std::int64_t number = 0;
    while (!AtEnd() && IsDigit(bytes_[position_])) {
        number = std::min(number * 10 + (bytes_[position_] - '0'), kGreatest);
        ++position_;
    }
    return static_cast<std::int32_t>(number);
}

void RtfTokenizer::SkipBinary(RtfToken& token) {
    token.kind = RtfTokenKind::Binary;
    const std::size_t claimed =
        token.number > 0 ? static_cast<std::size_t>(token.number) : std::size_t{0};
    position_ += std::min(claimed, bytes_.size() - position_);
}

RtfToken RtfTokenizer::ReadText() {
    const std::size_t start = position_;
    while (!AtEnd() && !EndsText(bytes_[position_]))
        ++position_;
    return {.kind = RtfTokenKind::Text, .text = bytes_.substr(start, position_ - start)};
}

} // namespace kelvo::desktop
