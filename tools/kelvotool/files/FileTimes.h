#pragma once
// When a file was changed, carried over to another file.

#include <string>

namespace kelvo::tool {

/// @return false when the system refuses
bool CopyFileTime(const std::string& from, const std::string& to);

} // namespace kelvo::tool
