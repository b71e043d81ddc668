#pragma once
// What the command line means to the player: the whole of it is the name of one film.

#include "framework/base/CString.h"

namespace kelvo {

/// The arguments joined as they were typed, one space between two; empty without any. A name that
/// exists, seen from the working directory, is made absolute: a bare name would otherwise be looked
/// for in the program's directory.
CString FileNameFrom(int argument_count, const char* const* arguments);

} // namespace kelvo
