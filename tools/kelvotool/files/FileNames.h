#pragma once
// What the names on the command line mean: they count from the working directory, as a person at a
// terminal expects, and an output never replaces what it should not.

#include "tools/kelvotool/report/Reporter.h"

#include <optional>
#include <string>

namespace kelvo::tool {

/// The full name of an existing ordinary file, or nothing after it was reported.
std::optional<std::string> InputName(const std::string& given, Reporter& reporter);

/// The full name of a file that may be made, or nothing after it was reported.
/// @param input  full name of the file that is read: never to be written
/// @param force  whether an ordinary file of that name may be replaced
std::optional<std::string> OutputName(const std::string& given, const std::string& input,
                                      bool force, Reporter& reporter);

/// Whether its name makes it a film (.kva) of two tracks.
bool HasFilmName(const std::string& name);

} // namespace kelvo::tool
