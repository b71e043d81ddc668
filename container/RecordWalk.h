#pragma once
// Finds the records of a container by walking from each to the next, when its index cannot be
// trusted.

#include "container/AVDirectory.h"
#include "container/ContainerHeader.h"
#include "container/RecordIndex.h"
#include "framework/base/Result.h"
#include "platform/base/types.h"

#include <optional>

namespace kelvo {

/// The index that the container has, if it lies whole inside the window; nothing of it is believed.
/// @param window  where the container lies in the file
std::optional<RecordIndex> ReadOldIndex(HFILE file, const TrackWindow& window,
                                        const ContainerHeader& header);

/// Whether the container's own index agrees with every record.
bool IndexAgreesWithRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                            const RecordIndex& old_index);

/// Every whole record from the first on. The header's count is not believed: fewer are found where
/// the file ends early, more where records that decode to their length follow. A record whose own
/// length is damaged keeps its place, and those behind it theirs, where the old index knows how
/// long it is.
/// @param header     checked by CheckHeaderFits
/// @param old_index  or null
/// @return Stopped when the person who sees the progress stops it; BadValue when the header counts
///         records and what stands in their place cannot be the first of them
[[nodiscard]] Error WalkRecords(HFILE file, const TrackWindow& window,
                                const ContainerHeader& header, const RecordIndex* old_index,
                                RecordIndex& index);

} // namespace kelvo
