#pragma once
// Mends a file from the records that are there, for files that were cut off, never closed or
// damaged: the tool for what ZFilekel refuses to open. Also for the tracks of a film (.kva), whose
// directory is then written anew with them. What is where, RecordMap finds out.

#include "container/AVDirectory.h"
#include "container/RecordMap.h"
#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "framework/base/Result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kelvo {

/// What became of one track.
struct RebuiltTrack {
    bool is_there = false;
    bool is_container = false;        ///< other tracks (Vorbis) have no index and stay as they are
    bool is_cut = false;              ///< the file ends before the track
    bool changed = false;             ///< false: the track was, or would be, left as it is
    std::uint32_t header_records = 0; ///< as the header claimed
    std::uint32_t records = 0;        ///< that the track has afterwards
    std::uint32_t start = 0;          ///< of the track in the old file
    RecordMap map = {};
};

struct RebuildReport {
    bool is_film = false;
    bool written = false;         ///< false when there was nothing to change
    bool directory_found = false; ///< the tracks lie elsewhere than the directory said
    RebuiltTrack audio;           ///< or the only track of a file that is no film
    RebuiltTrack video;
};

enum class RebuildAim : std::uint8_t {
    Report,  ///< nothing is written; every record is decoded
    Index,   ///< a new index; the records' own bytes stay as they are, damaged ones, too
    Salvage, ///< every record is decoded, and the new file holds sound ones only
};

/// What lost records become in place of a repetition of the record before: for sound, a byte of
/// silence. Given the container's header and user header; nothing: the record before.
using SilenceOf =
    std::function<std::optional<std::uint8_t>(const ContainerHeader& header, ByteView user_header)>;

struct RebuildOptions {
    RebuildAim aim = RebuildAim::Index;
    std::string output = {};     ///< the system's own name; empty: the file itself is replaced
    bool replace_output = false; ///< whether a file of that name is replaced
    SilenceOf silence = {};
    /// Where the tracks of a film lie, if its directory is not to be believed.
    std::optional<AVDirectory> directory = {};
    /// Called when the new file is whole, right before it takes its place; false gives up.
    std::function<bool()> before_placing = {};
};

/// Maps each container and writes the file anew, through a temporary, with an index right behind
/// the last record and the header that goes with it. With an output it is always written.
/// @return Missing, Unreadable; EndsEarly or BadValue when no header can be made out; Busy or
///         Mismatch when the temporary's name is taken; Unwritable; Stopped by the person who
///         sees the progress; the file is then as it was
[[nodiscard]] Result<RebuildReport> RebuildIndex(const CString& name,
                                                 const RebuildOptions& options = {});

} // namespace kelvo
