#pragma once
// The map of a container whose index cannot be trusted: where every record lies, which are lost,
// and why. The same map opens a damaged film for the player and mends it for a rebuild. The file is
// only read, and all that is done grows with its bytes, never with what its header claims.

#include "container/AVDirectory.h"
#include "container/ContainerHeader.h"
#include "container/RecordIndex.h"
#include "framework/base/Result.h"
#include "platform/base/types.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace kelvo {

enum class RecordState : std::uint8_t {
    Kept,
    Doubtful, ///< it is there, and what comes out of it may be wrong
    Lost,     ///< its place holds something else
};

enum class RecordReason : std::uint8_t {
    Sound,
    LengthMended, ///< its own length was wrong; the right one was found
    NotDecoding,  ///< it does not decode to the length of a record
    BuildsOnLost, ///< it holds what changed since a record that is lost or doubtful
    Destroyed,    ///< nothing that could be this record stands in its place
};

struct RecordVerdict {
    RecordState state = RecordState::Kept;
    RecordReason reason = RecordReason::Sound;
    friend bool operator==(const RecordVerdict&, const RecordVerdict&) = default;
};

/// What the file's own index was worth.
enum class OldIndex : std::uint8_t {
    Missing, ///< not inside the file
    Wrong,   ///< another one than the records give
    Sound,
};

struct RecordMap {
    /// Every record, lost ones included, one right behind the other: a lost one has a share of the
    /// bytes that nothing was found in, so that all numbers and times stay.
    RecordIndex index;
    std::vector<RecordVerdict> verdicts; ///< one a record
    std::uint32_t missing_at_end = 0;    ///< records that the header counts behind the last one
    OldIndex old_index = OldIndex::Missing;
    bool never_closed = false; ///< the header counts none, and some are there

    std::uint32_t Count(RecordState state) const;
    /// Whether it differs from what the file itself says, or holds anything but sound records.
    bool IsDamaged() const;
};

/// How much is looked at.
enum class MapDepth : std::uint8_t {
    Places,  ///< the lengths of all records; their contents only around damage
    Content, ///< every record is decoded
};

/// Told how many bytes of the container are done, now and then; false stops.
using MapProgress = std::function<bool(std::uint32_t position)>;

/// The index that the container has, if it lies whole inside the window; nothing of it is believed.
std::optional<RecordIndex> ReadOldIndex(HFILE file, const TrackWindow& window,
                                        const ContainerHeader& header);

/// Whether the entries of an index fit each other, without a look at the file: each record behind
/// the one before it, from the first on.
bool IndexHangsTogether(const RecordIndex& index, const ContainerHeader& header);

/// Whether each entry of an index has the length that its record states.
bool IndexAgreesWithRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                            const RecordIndex& index);

/// Maps a container. Records are walked from the first, each tells how long it is. Where one does
/// not, the old index is asked if its entries fit; otherwise the walk goes on where three records
/// behind each other fit and decode. Records beyond the header's count are taken where they decode.
/// @param window  as far as the file goes
/// @param header  checked by CheckHeaderFits with a RecordCount of 0
/// @param progress  may be empty
/// @return Stopped; TooLarge without memory; BadValue when the header counts records and none is
///         there
[[nodiscard]] Error MapRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                               MapDepth depth, const MapProgress& progress, RecordMap& map);

} // namespace kelvo
