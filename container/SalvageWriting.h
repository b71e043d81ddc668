#pragma once
// Writes the sound form of a damaged container: what is kept as it was stored, what is damaged as
// far as it decodes, and what is lost as the record before it or as silence.

#include "container/ContainerHeader.h"
#include "container/RecordMap.h"
#include "container/RewriteTarget.h"
#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace kelvo {

/// @param window   where the damaged container lies in the file
/// @param map      of its contents (MapDepth::Content)
/// @param silence  the bytes of a record that was lost; none: as the record before
/// @param step     called now and then with a position; false stops; may be empty
/// @return Stopped; Unreadable; TooLarge for records that are too long to be decoded in trust; else
///         what the target says
[[nodiscard]] Error WriteSalvaged(RewriteTarget& target, HFILE file, const TrackWindow& window,
                                  const ContainerHeader& header, ByteView user_header,
                                  const RecordMap& map, std::optional<std::uint8_t> silence,
                                  const MapProgress& step);

} // namespace kelvo
