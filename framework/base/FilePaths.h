#pragma once
// What the framework makes of the names of files: their parts, and the full path behind a bare
// name.
// "\" and "/" both separate.

#include "framework/base/CString.h"
#include "platform/base/types.h"

namespace kelvo {

/// Directory of the program file, with its final separator; where that cannot be written, the one
/// in which the program keeps its files instead.
/// @param module  whose file that is; null is the program
CString ProgramDirectory(HINSTANCE module = nullptr);

/// The full path that open and create use: a name without a separator after its first character is
/// put behind the directory (which ends with a separator), or without one behind the program's. A
/// name that begins with "/" is a full path already.
CString ResolvePath(HINSTANCE module, const CString& name, const char* directory);

// Parts of a path. An empty path gives an empty result.

/// Through the last separator; empty when there is none.
CString PathDirectory(const CString& path);
/// After the last "." of the file name; a "." in the path's first place does not count.
CString PathExtension(const CString& path);
/// The file name without its extension and the "." before it; a "." in its first place does not
/// count.
CString PathTitle(const CString& path);
/// The file name: what follows the last separator.
CString PathFileName(const CString& path);

} // namespace kelvo
