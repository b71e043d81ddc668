#pragma once
// Finds the records of a container by walking from each to the next, when its index cannot be
// trusted.

#include "container/AVDirectory.h"
#include "container/ContainerHeader.h"
#include "container/RecordIndex.h"
#include "framework/base/Result.h"
#include "platform/base/types.h"

namespace kelvo {

/// Whether the container's own index is whole and agrees with every record.
/// @param window  where the container lies in the file
bool IndexAgreesWithRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header);

/// Every whole record from the first on. The header's count is not believed: fewer are found where
/// the file ends early, more where records that decode to their length follow.
/// @param header  checked by CheckHeaderFits
/// @return Stopped when the person who sees the progress stops it
[[nodiscard]] Error WalkRecords(HFILE file, const TrackWindow& window,
                                const ContainerHeader& header, RecordIndex& index);

} // namespace kelvo
