#pragma once
// UTF-16 that strangers wrote, made clean, and its way to UTF-8.

#include <string>
#include <string_view>

namespace kelvo::desktop {

constexpr bool IsHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// The text without control characters (but for the tab); halves of characters and units that
/// documents use for themselves become U+FFFD, other line separators a line break.
std::u16string WithoutStrayUnits(std::u16string_view text);

/// Of a clean text.
std::string Utf8Of(std::u16string_view text);
/// Bytes that are no UTF-8 become U+FFFD.
std::u16string Utf16Of(std::string_view text);

} // namespace kelvo::desktop
