#pragma once
// Copies the records of an open container into a rewrite, coded anew, each read once and in order.

#include "container/RewriteTarget.h"
#include "container/ZFilekel.h"
#include "framework/base/Result.h"

#include <cstdint>
#include <functional>

namespace kelvo {

/// What becomes of a record that does not decode.
enum class DamagedRecords : std::uint8_t {
    KeepStored,    ///< its stored bytes are carried over where the type stays, else nothing is
                   ///< rewritten: the rewrite takes the place of the only copy
    KeepWhatReads, ///< what could be decoded becomes the record; the source stays
};

/// Called after each record with its number; false stops.
using CopyStep = std::function<bool(std::uint32_t record)>;

/// @param target  between BeginContainer and EndContainer, of the same record and side lengths
/// @param type    the target's
/// @return Stopped by the step; EndsEarly or TooLarge for a damaged record that may not be copied,
///         Unreadable with its place in the source; else what the target says
[[nodiscard]] Error CopyRecords(ZFilekel& source, RewriteTarget& target, std::uint32_t type,
                                DamagedRecords damaged, const CopyStep& step);

} // namespace kelvo
