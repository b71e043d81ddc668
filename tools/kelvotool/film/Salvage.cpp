#include "tools/kelvotool/film/Salvage.h"

#include "media/AudioHeader.h"

#include <fmt/format.h>

namespace kelvo::tool {

namespace {

std::string_view NameOf(OldIndex index) {
    switch (index) {
    case OldIndex::Missing:
        return "missing";
    case OldIndex::Wrong:
        return "wrong";
    case OldIndex::Sound:
        break;
    }
    return "sound";
}

ProblemCode CodeOf(const RecordVerdict& verdict) {
    return verdict.state == RecordState::Lost ? ProblemCode::RecordMissing
                                              : ProblemCode::RecordDamaged;
}

/// What the new file has in their place.
std::string_view Outcome(RecordReason reason, RebuildAim aim) {
    if (aim == RebuildAim::Index) return "; its bytes stay as they are";
    if (aim == RebuildAim::Report) return "";
    switch (reason) {
    case RecordReason::LengthMended:
        return "; mended";
    case RecordReason::NotDecoding:
        return "; kept as far as it decodes";
    case RecordReason::Destroyed:
        return "; the record before it, or silence, stands in its place";
    case RecordReason::BuildsOnLost:
    case RecordReason::Sound:
        break;
    }
    return "; kept";
}

std::string Numbers(const RecordRun& run) {
    return run.first == run.last ? fmt::format("record {}", run.first)
                                 : fmt::format("records {} to {}", run.first, run.last);
}

} // namespace

std::string_view NameOf(RecordState state) {
    switch (state) {
    case RecordState::Kept:
        return "kept";
    case RecordState::Doubtful:
        return "doubtful";
    case RecordState::Lost:
        break;
    }
    return "lost";
}

std::string_view NameOf(RecordReason reason) {
    switch (reason) {
    case RecordReason::Sound:
        return "sound";
    case RecordReason::LengthMended:
        return "length-mended";
    case RecordReason::NotDecoding:
        return "not-decoding";
    case RecordReason::BuildsOnLost:
        return "builds-on-lost";
    case RecordReason::Destroyed:
        break;
    }
    return "destroyed";
}

std::string_view TextOf(RecordReason reason) {
    switch (reason) {
    case RecordReason::Sound:
        return "";
    case RecordReason::LengthMended:
        return "its own length is wrong, and the right one is known";
    case RecordReason::NotDecoding:
        return "it does not decode to the length of a record";
    case RecordReason::BuildsOnLost:
        return "it holds what changed since a record that is not sound";
    case RecordReason::Destroyed:
        break;
    }
    return "nothing in its place can be a record";
}

std::vector<RecordRun> RunsOf(const RebuiltTrack& track) {
    std::vector<RecordRun> runs;
    const RecordMap& map = track.map;
    for (std::uint32_t n = 0; n < map.verdicts.size(); ++n) {
        if (!runs.empty() && runs.back().verdict == map.verdicts[n]) {
            runs.back().last = n;
            continue;
        }
        const std::uint64_t offset = std::uint64_t{track.start} + map.index.RecordOffset(n);
        runs.push_back({n, n, map.verdicts[n], offset});
    }
    return runs;
}

Json JsonOf(const RebuiltTrack& track) {
    Json json{{"form", track.is_container ? "container" : "other"}};
    if (!track.is_container) return json;
    const RecordMap& map = track.map;
    json["index"] = NameOf(map.old_index);
    json["never_closed"] = map.never_closed;
    json["cut"] = track.is_cut;
    json["header_records"] = track.header_records;
    json["records"] = track.records;
    for (const RecordState state : {RecordState::Kept, RecordState::Doubtful, RecordState::Lost})
        json[std::string(NameOf(state))] = map.Count(state);
    json["missing_at_end"] = map.missing_at_end;
    json["changed"] = track.changed;
    Json runs = Json::array();
    for (const RecordRun& run : RunsOf(track)) {
        runs.push_back({{"first", run.first},
                        {"last", run.last},
                        {"state", NameOf(run.verdict.state)},
                        {"reason", NameOf(run.verdict.reason)},
                        {"offset", run.offset}});
    }
    json["runs"] = std::move(runs);
    return json;
}

std::string Summary(const RecordMap& map, std::uint32_t header_records) {
    const std::uint32_t count = map.index.Count();
    const std::uint32_t doubtful = map.Count(RecordState::Doubtful);
    const std::uint32_t there = count - map.Count(RecordState::Lost);
    const std::uint32_t all = header_records > count ? header_records : count;
    return fmt::format("{} of {} records can be kept{}", there, all,
                       doubtful > 0 ? fmt::format(", {} of them doubtful", doubtful) : "");
}

void ReportTrack(const RebuiltTrack& track, std::optional<TrackKind> kind, RebuildAim aim,
                 Reporter& reporter) {
    if (!track.is_there || !track.is_container) return;
    const RecordMap& map = track.map;
    if (aim == RebuildAim::Report && map.old_index != OldIndex::Sound) {
        const bool missing = map.old_index == OldIndex::Missing;
        reporter.Report({.code = missing ? ProblemCode::IndexMissing : ProblemCode::IndexDamaged,
                         .track = kind,
                         .what = map.never_closed
                                     ? "it was never closed: its header counts no record"
                                 : missing ? "it has no index inside the file"
                                           : "its index is not that of its records",
                         .remedy = "kelvotool rebuild: " + Summary(map, track.header_records)});
    }
    for (const RecordRun& run : RunsOf(track)) {
        if (run.verdict.reason == RecordReason::Sound) continue;
        const bool mended =
            aim == RebuildAim::Salvage && run.verdict.reason == RecordReason::LengthMended;
        reporter.Report(
            {.severity = mended ? kAllWell : kDamaged,
             .code = CodeOf(run.verdict),
             .track = kind,
             .what = fmt::format("{}: {}, {}{}", Numbers(run), NameOf(run.verdict.state),
                                 TextOf(run.verdict.reason), Outcome(run.verdict.reason, aim)),
             .record = run.first,
             .offset = run.offset});
    }
    if (map.missing_at_end > 0) {
        reporter.Report({.code = ProblemCode::RecordMissing,
                         .track = kind,
                         .what = fmt::format("only {} of {} records are there", map.index.Count(),
                                             track.header_records)});
    }
}

std::optional<std::uint8_t> SilenceFor(const ContainerHeader& header, ByteView user_header) {
    const Result<AudioHeader> audio = ParseAudioHeader(user_header);
    const bool is_sound = user_header.size() == kAudioHeaderSize && audio &&
                          CheckAudioHeader(audio.Value()).fault == Fault::None &&
                          audio.Value().FrameBytes == header.RecordLength;
    if (!is_sound) return std::nullopt;
    return SilenceByte(audio.Value());
}

} // namespace kelvo::tool
