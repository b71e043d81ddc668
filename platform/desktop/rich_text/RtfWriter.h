#pragma once
// A formatted text to rich-text bytes that every reader of rich text understands: ASCII, accents of
// code page 1252 as bytes, all else as numbers with a question mark for readers of old.

#include "platform/desktop/rich_text/RichText.h"

#include <string>

namespace kelvo::desktop {

/// ReadRtf of the result gives the same text again.
[[nodiscard]] std::string WriteRtf(const RichText& text);

} // namespace kelvo::desktop
