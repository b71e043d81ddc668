#pragma once
// Where the program's own files lie, and what a name on the command line means.

#include <string>
#include <string_view>

namespace kelvo::platform {

/// The program's file as it was started, links resolved; empty when the system does not say.
[[nodiscard]] const std::string& ProgramFile();

/// The folder against which names without a folder are resolved and where the program keeps its own
/// files: the one of the program's file; where that cannot be written, "kelvo" in XDG_STATE_HOME
/// (else in ~/.local/state), which is then made. Ends in `/`.
[[nodiscard]] std::string ProgramDirectory();

/// The same for a program whose file lies in `program_folder` (which ends in `/`). Where nothing
/// can be written at all it is that folder after all.
[[nodiscard]] std::string OwnFilesDirectory(const std::string& program_folder);

/// A name that an existing file or folder has, seen from the working directory, is made absolute
/// and spelt as the file system has it; any other name comes back unchanged.
[[nodiscard]] std::string AbsoluteIfExisting(std::string_view name);

} // namespace kelvo::platform
