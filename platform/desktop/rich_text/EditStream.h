#pragma once
// The whole of an edit control's stream, pulled from its callback or pushed into it.

#include "platform/desktop/rich_text.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::desktop {

inline constexpr std::size_t kLongestStream = std::size_t{64} << 20U;

/// Asks the callback for pieces until it ends the stream; sets dwError.
/// @return none when it is longer than kLongestStream.
[[nodiscard]] std::optional<std::string> PullStream(EDITSTREAM& stream);

/// Gives the callback all of it, piece by piece, until it stops; sets dwError.
/// @return whether it took everything
bool PushStream(EDITSTREAM& stream, std::string_view bytes);

} // namespace kelvo::desktop
