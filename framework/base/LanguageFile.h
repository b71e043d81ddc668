#pragma once
// The text format of a language file:
//
//     $100$199$          the interval of string ids that the file covers
//     @>100<Errore       an entry: marker, id, text up to the next marker
//     @>101<Avviso\n     escapes: \b \n \r \t, else the character itself; line ends do not count

#include "framework/base/XLanguageInfoClass.h"

#include <cstdint>
#include <string_view>

namespace kelvo {

/// Ids that one file covers at most.
inline constexpr std::int32_t kLanguageFileIds = 10000;

/// Fills the interval and the texts of a file.
/// @return false when the content is malformed, covers more than kLanguageFileIds ids, has an entry
///         outside its interval, or when there is no memory; the texts are then meaningless
[[nodiscard]] bool ParseLanguageFile(std::string_view content,
                                     XLanguageInfoClass::LinguaFile& file);

} // namespace kelvo
