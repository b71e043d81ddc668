#pragma once
// Makes the index of a file anew from the records that are there, for files that were cut off or
// never closed: the tool for what ZFilekel refuses to open. Also for the tracks of a film (.kva),
// whose directory is then written anew with them.

#include "framework/base/CString.h"
#include "framework/base/Result.h"

#include <cstdint>

namespace kelvo {

/// What became of one track.
struct RebuiltTrack {
    bool is_there = false;
    bool is_container = false;        ///< other tracks (Vorbis) have no index and stay as they are
    bool changed = false;             ///< false: index and header agreed with the records
    std::uint32_t header_records = 0; ///< as the header claimed
    std::uint32_t records = 0;        ///< as the walk over the records found
};

struct RebuildReport {
    bool is_film = false;
    bool written = false; ///< false when there was nothing to change: the file was not touched
    RebuiltTrack audio;   ///< or the only track of a file that is no film
    RebuiltTrack video;
};

/// Walks the records of each container, up to the last whole one, and writes the file anew, through
/// a temporary, with the index right behind that record and the header that goes with it. Records
/// beyond the header's count are taken where they decode to their length.
/// @return Missing, Unreadable; EndsEarly or BadValue when no header can be made out; Busy or
///         Mismatch when the temporary's name is taken; Unwritable; Stopped by the person who
///         sees the progress; the file is then as it was
[[nodiscard]] Result<RebuildReport> RebuildIndex(const CString& name);

} // namespace kelvo
