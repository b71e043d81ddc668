#pragma once
// How a name that the program was given finds its file: `\` and `/` both separate, and a name that
// does not exist is tried without regard to the case of its letters. Names are bytes; case is
// looked at only where the bytes are UTF-8.

#include <optional>
#include <string>
#include <string_view>

namespace kelvo::platform {

/// True for `/` and `\`.
constexpr bool IsSeparator(char letter) {
    return letter == '/' || letter == '\\';
}

/// The file that `name` means, spelt as the file system has it. A name that exists as it stands
/// wins over every other reading; else each component is taken as it stands, and if there is no
/// such, in another case (the first in byte order where several fit and lead to the rest).
/// @return nothing when there is no such file; then errno says why (ENOENT mostly).
[[nodiscard]] std::optional<std::string> ExistingFileName(std::string_view name);

/// The name under which a new file is made: the folder as ExistingFileName finds it, the last
/// component as it stands, so that nothing but the named file is ever replaced.
/// @return nothing when the folder does not exist.
[[nodiscard]] std::optional<std::string> NewFileName(std::string_view name);

/// True when the two names differ in the case of their letters only (all of Unicode's simple pairs
/// where the bytes are UTF-8, the plain bytes elsewhere).
[[nodiscard]] bool EqualWithoutCase(std::string_view a, std::string_view b);

} // namespace kelvo::platform
