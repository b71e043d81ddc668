#pragma once
// MENU, ACCELERATORS, STRINGTABLE and raw data: from their BEGIN to their END, into the bytes that
// the loading calls hand out.

#include "tools/resource_compiler/TokenCursor.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace kelvo::resource_compiler {

/// A menu header of zeros, then for each item its flags, its id (a popup has none) and its UTF-16
/// text; the last item of a popup and of the menu has flag 0x80. A separator has flag 0x800, id 0
/// and an empty text.
[[nodiscard]] std::vector<std::uint8_t> ParseMenu(TokenCursor& cursor);

/// Eight bytes a key: flags (the last one has 0x80), key, command, 0.
[[nodiscard]] std::vector<std::uint8_t> ParseAccelerators(TokenCursor& cursor);

/// Numbers of 16 bits (of 32 with an L) and texts without a final 0 (UTF-16 with an L).
[[nodiscard]] std::vector<std::uint8_t> ParseRawData(TokenCursor& cursor);

/// Adds the texts of one STRINGTABLE to those so far.
void ParseStringTable(TokenCursor& cursor, std::map<std::uint16_t, std::string>& texts);

/// One block of 16 neighbouring texts, each a length in UTF-16 units and the units.
[[nodiscard]] std::vector<std::uint8_t> StringBlock(const std::array<std::string, 16>& texts);

} // namespace kelvo::resource_compiler
