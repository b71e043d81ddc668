#pragma once
// Something that is wrong with a file: how bad it is, what it is, where it is, and what helps.

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::tool {

/// How a command ended. Where several files are done, the highest counts.
enum ExitCode : int {
    kAllWell = 0,
    kDamaged = 1,       ///< done, but something is damaged or was left out
    kNotDone = 2,       ///< unreadable, not one of these files, or wrong use
    kStoppedBase = 128, ///< plus the number of the signal that stopped it
};

enum class TrackKind : std::uint8_t { Audio, Video };

std::string_view NameOf(TrackKind kind);

/// What kind of problem it is, for scripts: the names in CodeName never change.
enum class ProblemCode : std::uint8_t {
    NotDone, ///< what no other code says
    InputMissing,
    InputUnreadable,
    NotAFilm, ///< none of these files
    OutputExists,
    OutputUnwritable,
    NotPossible, ///< the request does not fit the file
    HeaderDamaged,
    DirectoryDamaged,
    IndexMissing,
    IndexDamaged,
    RecordDamaged,
    RecordMissing,
    RecordDiffers, ///< read by its number or compared with a list
    StreamDamaged, ///< of a Vorbis sound
    SyncDamaged,   ///< the numbers that tie pictures to sound
    LeftOut,       ///< what the new form cannot hold
};

std::string_view CodeName(ProblemCode code);
/// What a person can do about it; empty when nothing helps.
std::string_view RemedyFor(ProblemCode code);

/// kAllWell is a warning: it counts only where warnings are to count.
struct Problem {
    ExitCode severity = kDamaged;
    ProblemCode code = ProblemCode::NotDone;
    std::optional<TrackKind> track = {}; ///< none: of the whole file, or of its only track
    std::string what = {};               ///< English, without a full stop
    std::optional<std::uint32_t> record = {};
    std::optional<std::uint64_t> offset = {}; ///< from the start of the file
    std::string remedy = {};                  ///< where more is known than RemedyFor says
};

/// The problem in words: "video: what (record 3, offset 1234)".
std::string TextOf(const Problem& problem);
/// The problem as documents list it: code, severity, where, message, remedy.
nlohmann::ordered_json JsonOf(const Problem& problem);

} // namespace kelvo::tool
