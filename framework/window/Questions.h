#pragma once
// What every object may ask the user beyond Yes and No: a text, or a choice from a list.

#include "framework/base/CString.h"

#include <cstdint>
#include <span>

namespace kelvo {

/// Asks for a text, beginning with an initial one. The prompt is printf-style and cut at 8191
/// bytes.
/// @return what was typed; empty after "Annulla"
[[gnu::format(printf, 3, 4)]] CString EnterString(const CString& initial, const char* caption,
                                                  const char* format, ...);

/// Lets one of the texts be chosen. The prompt is printf-style and cut at 8191 bytes.
/// @param selected  the item selected at first, if it is one; receives the choice
/// @return 1 when the dialog ended with a nonzero result, else 0
[[gnu::format(printf, 4, 5)]] int ChooseFromList(std::span<const CString> items,
                                                 std::int32_t& selected, const char* caption,
                                                 const char* format, ...);

} // namespace kelvo
