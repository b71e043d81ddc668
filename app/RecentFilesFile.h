#pragma once
// The bytes in which the recent files lie between runs, and how they get there when several Kelvos
// save at once: each reads what the others wrote, under one lock, and the file changes as a whole.

#include "framework/base/Bytes.h"
#include "framework/base/CArray.h"
#include "framework/base/CString.h"
#include "framework/base/Result.h"

#include <cstdint>
#include <vector>

namespace kelvo {

struct RecentFile {
    CString path;            ///< full
    std::uint32_t value = 0; ///< stored with it
};

using RecentFiles = CArray<RecentFile>;

/// Puts a file in front. An entry of the same path, in whatever case, goes; without one the last
/// goes when there are `maximum` already.
void PutInFront(RecentFiles& files, const RecentFile& file, std::int32_t maximum);

/// @return TooLarge or BadValue for a count or a length that no list of files has, EndsEarly where
///         bytes are missing
Result<RecentFiles> ReadRecentFiles(ByteView bytes);
std::vector<std::uint8_t> RecentFilesBytes(const RecentFiles& files);

/// @return Missing when there is no such file, Unreadable when it cannot be read, else as
///         ReadRecentFiles
Result<RecentFiles> LoadRecentFiles(const CString& name);

/// Puts `added` (the latest in front) before what the file holds, or writes `files` where the file
/// holds no list. Waits up to two seconds for another Kelvo that saves.
/// @return false when nothing was written: the file is as it was
bool SaveRecentFiles(const CString& name, const RecentFiles& files, const RecentFiles& added,
                     std::int32_t maximum);

} // namespace kelvo
