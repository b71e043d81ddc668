#include "tools/resource_compiler/TemplateBytes.h"

namespace kelvo::resource_compiler {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// The next code point, and away with its bytes.
char32_t TakeCodePoint(std::string_view& text) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t first = byte(0);
    const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    char32_t code = first < 0x80 ? first : static_cast<char32_t>(first & (0x7FU >> length));
    bool whole = first < 0x80 || (first >= 0xC2 && first < 0xF5 && length <= text.size());
    for (std::size_t i = 1; whole && i < length; ++i) {
        whole = (byte(i) & 0xC0U) == 0x80;
        code = (code << 6U) | (byte(i) & 0x3FU);
    }
    text.remove_prefix(whole ? length : 1);
    return whole && code < 0x110000 ? code : kReplacement;
}

} // namespace

std::u16string Utf16From(std::string_view text) {
    std::u16string units;
    while (!text.empty()) {
        const char32_t code = TakeCodePoint(text);
        if (code < 0x10000) {
            units += static_cast<char16_t>(code);
        } else {
            units += static_cast<char16_t>(0xD800U + ((code - 0x10000U) >> 10U));
            units += static_cast<char16_t>(0xDC00U + ((code - 0x10000U) & 0x3FFU));
        }
    }
    return units;
}

void TemplateBytes::AddU16(std::uint16_t value) {
    AddU8(static_cast<std::uint8_t>(value));
    AddU8(static_cast<std::uint8_t>(value >> 8U));
}

void TemplateBytes::AddU32(std::uint32_t value) {
    AddU16(static_cast<std::uint16_t>(value));
    AddU16(static_cast<std::uint16_t>(value >> 16U));
}

void TemplateBytes::AddBytes(std::span<const std::uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

void TemplateBytes::AddText(std::string_view text) {
    for (const char16_t unit : Utf16From(text)) {
        AddU16(unit);
    }
    AddU16(0);
}

void TemplateBytes::AddNumberOrText(const NumberOrText& value) {
    if (const auto* const number = std::get_if<std::uint16_t>(&value)) {
        AddU16(0xFFFF);
        AddU16(*number);
    } else {
        AddText(std::get<std::string>(value));
    }
}

void TemplateBytes::AlignTo(std::size_t alignment) {
    while (bytes_.size() % alignment != 0) {
        bytes_.push_back(0);
    }
}

void TemplateBytes::MarkU16(std::size_t offset, std::uint16_t bits) {
    bytes_[offset] |= static_cast<std::uint8_t>(bits);
    bytes_[offset + 1] |= static_cast<std::uint8_t>(bits >> 8U);
}

} // namespace kelvo::resource_compiler
