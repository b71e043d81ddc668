#pragma once
// Collects the bytes of a template: little-endian numbers, UTF-16 texts and what lies between them.

#include "tools/resource_compiler/TokenCursor.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo::resource_compiler {

/// The UTF-16 units of a UTF-8 text; a stray byte becomes the replacement character.
[[nodiscard]] std::u16string Utf16From(std::string_view text);

class TemplateBytes {
public:
    void AddU8(std::uint8_t value) { bytes_.push_back(value); }
    void AddU16(std::uint16_t value);
    void AddU32(std::uint32_t value);
    void AddBytes(std::span<const std::uint8_t> bytes);
    /// UTF-16 with its final 0.
    void AddText(std::string_view text);
    /// 0xFFFF and the number, or the text.
    void AddNumberOrText(const NumberOrText& value);
    /// Zeros up to the next multiple.
    void AlignTo(std::size_t alignment);

    /// Sets these bits in what was written before.
    void MarkU16(std::size_t offset, std::uint16_t bits);
    [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
    [[nodiscard]] std::vector<std::uint8_t> Finish() { return std::move(bytes_); }

private:
    std::vector<std::uint8_t> bytes_;
};

} // namespace kelvo::resource_compiler
