#pragma once
// Rich-text bytes to a formatted text. Takes bytes from anybody: every number is a claim, groups
// may be as deep as they like, and what ends early gives what came before the end.

#include "platform/desktop/rich_text/RichText.h"

#include <cstdint>
#include <optional>
#include <span>

namespace kelvo::desktop {

/// Beyond these the text goes on, but in the format of the last run, and with line breaks in place
/// of paragraphs: formats cost far more memory than the bytes that ask for them.
inline constexpr std::size_t kMaximumRuns = std::size_t{1} << 20U;
inline constexpr std::size_t kMaximumParagraphs = std::size_t{1} << 20U;

/// Reads text with its fonts, sizes, weights, colours, alignment, indents and tabs. Pictures,
/// headers, notes, hidden texts and whatever a reader may ignore are left out; table cells become
/// tabs.
/// @return none when the bytes do not begin as a rich text does.
[[nodiscard]] std::optional<RichText> ReadRtf(std::span<const std::uint8_t> bytes);

} // namespace kelvo::desktop
