#include "platform/desktop/rich_text/Utf.h"

#include "platform/desktop/rich_text/CodePages.h"
#include "platform/desktop/rich_text/RichText.h"

#include <cstdint>

namespace kelvo::desktop {
namespace {

constexpr char16_t kReplacement = 0xFFFD;
constexpr int kUtf8CodePage = 65001;

/// @return 0 for what is left out.
char16_t CleanUnit(char16_t unit) {
    if (unit == '\t') return unit;
    if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0)) return 0;
    if (unit == 0x2029) return kLineBreak;
    if (unit == 0xFEFF) return 0;
    // Not characters; documents mark frames and objects with some of them.
    if ((unit >= 0xFDD0 && unit <= 0xFDEF) || unit == 0xFFFC || unit >= 0xFFFE) {
        return kReplacement;
    }
    return unit;
}

} // namespace

std::u16string WithoutStrayUnits(std::u16string_view text) {
    std::u16string clean;
    clean.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char16_t unit = text[at];
        if (IsHighSurrogate(unit) && at + 1 < text.size() && IsLowSurrogate(text[at + 1])) {
            clean += unit;
            clean += text[++at];
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
            clean += kReplacement;
        } else if (const char16_t kept = CleanUnit(unit); kept != 0) {
            clean += kept;
        }
    }
    return clean;
}

std::string Utf8Of(std::u16string_view text) {
    std::string bytes;
    const auto append = [&bytes](std::uint32_t value) { bytes += static_cast<char>(value); };
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::uint32_t point = text[at];
        if (IsHighSurrogate(text[at]) && at + 1 < text.size()) {
            point = 0x10000U + ((point - 0xD800U) << 10U) + (text[++at] - 0xDC00U);
        }
        if (point < 0x80) {
            append(point);
        } else if (point < 0x800) {
            append(0xC0U | (point >> 6U));
            append(0x80U | (point & 0x3FU));
        } else if (point < 0x10000) {
            append(0xE0U | (point >> 12U));
            append(0x80U | ((point >> 6U) & 0x3FU));
            append(0x80U | (point & 0x3FU));
        } else {
            append(0xF0U | (point >> 18U));
            append(0x80U | ((point >> 12U) & 0x3FU));
            append(0x80U | ((point >> 6U) & 0x3FU));
            append(0x80U | (point & 0x3FU));
        }
    }
    return bytes;
}

std::u16string Utf16Of(std::string_view text) {
    CodePage utf8{kUtf8CodePage};
    return utf8.Decode(text);
}

} // namespace kelvo::desktop
