#pragma once
// What kelvotool can do: one function a command. Each prints its result on standard output and what
// is wrong on standard error; CommandLine.cpp says what a person types to get there.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

/// How a command ended. Where several files are done, the highest counts.
enum ExitCode : int {
    kAllWell = 0,
    kDamaged = 1,       ///< done, but something is damaged or was left out
    kNotDone = 2,       ///< unreadable, not one of these files, or wrong use
    kStoppedBase = 128, ///< plus the number of the signal that stopped it
};

enum class TrackKind : std::uint8_t { Audio, Video };

struct InfoOptions {
    std::string file;
    bool json = false;
};
/// Headers, sizes and the state of the index, as far as they can be made out.
int RunInfo(const InfoOptions& options);

struct FramesOptions {
    std::string file;
    std::optional<TrackKind> track; ///< needed only where the file has two
    bool json = false;
    std::string raw; ///< file for the decoded bytes; empty for none
    bool force = false;
};
/// Every record of a track, decoded in order: its hash, or its bytes.
int RunFrames(const FramesOptions& options);

struct VerifyOptions {
    std::vector<std::string> files;
};
/// Reads everything, in order and by number, and compares the index with the records.
int RunVerify(const VerifyOptions& options);

struct RebuildOptions {
    std::string file;
};
/// Makes the index anew from the records.
int RunRebuild(const RebuildOptions& options);

struct ConvertOptions {
    std::string input;
    std::string output;
    std::optional<int> type;       ///< of the picture, or of the only track
    std::optional<int> audio_type; ///< of the sound
    std::optional<std::uint32_t> key_interval;
    bool force = false;
};
/// The same film or track in another type.
int RunConvert(const ConvertOptions& options);

} // namespace kelvo::tool
