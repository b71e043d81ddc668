#pragma once
// DIALOG and DIALOGEX: from the statement's coordinates to its END, into the bytes of a DLGTEMPLATE
// or a DLGTEMPLATEEX.

#include "tools/resource_compiler/TokenCursor.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo::resource_compiler {

enum class Extended : std::uint8_t { No, Yes };

struct ParsedDialog {
    std::vector<std::uint8_t> bytes;
    std::optional<std::uint16_t> language; ///< if the dialog itself names one
};

/// What follows the word DIALOG or DIALOGEX. The cursor keeps the first failure.
[[nodiscard]] ParsedDialog ParseDialog(TokenCursor& cursor, Extended extended);

/// LANGUAGE's two numbers, the word itself being taken already.
[[nodiscard]] std::uint16_t ParseLanguage(TokenCursor& cursor);

} // namespace kelvo::resource_compiler
