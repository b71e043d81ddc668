#pragma once
// Where the two tracks of a film really lie, when its directory cannot be true: the file is
// searched for what a track begins with. Nothing is believed that is not checked as an opening
// would check it.

#include "container/AVDirectory.h"
#include "framework/base/CString.h"
#include "framework/base/Result.h"
#include "platform/base/types.h"

#include <cstdint>

namespace kelvo {

struct FoundTracks {
    AVDirectory directory; ///< a track that is nowhere is absent; ends are inside the file
    bool lies = false;     ///< the film's own directory says otherwise than by being cut off
};

/// @param size  of the file
/// @param directory  as the file has it
FoundTracks FindFilmTracks(HFILE file, std::uint64_t size, const AVDirectory& directory);

/// The same for a film that is not open.
/// @return EndsEarly for a file without a directory, Missing or Unreadable for none
Result<FoundTracks> FindFilmTracks(const CString& name);

} // namespace kelvo
