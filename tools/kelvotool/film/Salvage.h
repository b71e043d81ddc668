#pragma once
// What can be saved of a damaged film, in the words and documents of the tool.

#include "container/IndexRebuild.h"
#include "tools/kelvotool/report/Problem.h"
#include "tools/kelvotool/report/Reporter.h"
#include "tools/kelvotool/report/Results.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::tool {

/// Records behind each other of which the same is to be said.
struct RecordRun {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    RecordVerdict verdict;
    std::uint64_t offset = 0; ///< of the first, from the start of the file
};

std::string_view NameOf(RecordState state);
std::string_view NameOf(RecordReason reason);
/// The reason in words; empty for a sound record.
std::string_view TextOf(RecordReason reason);

std::vector<RecordRun> RunsOf(const RebuiltTrack& track);
Json JsonOf(const RebuiltTrack& track);
/// "28 of 60 records can be kept", or nothing to say of a sound one.
std::string Summary(const RecordMap& map, std::uint32_t header_records);

/// Says what is wrong with a track and was, or would be, done about it.
/// @param kind  none for a file's only track
void ReportTrack(const RebuiltTrack& track, std::optional<TrackKind> kind, RebuildAim aim,
                 Reporter& reporter);

/// Lost frames of sound become silence, lost images the image before.
std::optional<std::uint8_t> SilenceFor(const ContainerHeader& header, ByteView user_header);

} // namespace kelvo::tool
