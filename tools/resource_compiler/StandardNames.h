#pragma once
// The constants that a script may use without defining them: styles, key codes, languages, ids.

#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvo::resource_compiler {

/// Nothing for a name that is none of them. Case counts.
[[nodiscard]] std::optional<std::uint32_t> StandardValue(std::string_view name);

} // namespace kelvo::resource_compiler
