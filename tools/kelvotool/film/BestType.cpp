#include "tools/kelvotool/film/BestType.h"

#include "container/codec/CompressionTypes.h"
#include "framework/base/ProgressDisplay.h"
#include "tools/kelvotool/film/ConversionRules.h"
#include "tools/kelvotool/film/RecordCoding.h"
#include "tools/kelvotool/film/RecordPipeline.h"

#include <algorithm>
#include <tuple>

namespace kelvo::tool {

namespace {

// Decoded bytes that are tried in each type; a longer track is judged by a sample.
constexpr std::uint64_t kMostBytes = std::uint64_t{24} * 1024 * 1024;
constexpr std::uint32_t kParts = 8;

/// Records [first, end).
struct Part {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
};

/// The whole track, or runs from all over it: differences need the record before.
std::vector<Part> PartsOf(const TrackReader& reader, std::uint64_t record_bytes) {
    const std::uint32_t count = reader.Count();
    const std::uint64_t most =
        std::max<std::uint64_t>(kMostBytes / std::max<std::uint64_t>(record_bytes, 1), 2 * kParts);
    // A Vorbis sound is read from its start only.
    if (count <= most) return {{0, count}};
    if (reader.IsVorbis()) return {{0, static_cast<std::uint32_t>(most)}};
    const auto length = static_cast<std::uint32_t>(most / kParts);
    std::vector<Part> parts;
    for (std::uint32_t i = 0; i < kParts; ++i) {
        const auto first =
            static_cast<std::uint32_t>(std::uint64_t{count - length} * i / (kParts - 1));
        parts.push_back({first, first + length});
    }
    return parts;
}

Result<TypeTrial> Try(const TrackReader& source, const ContainerHeader& header,
                      const std::vector<Part>& parts, unsigned jobs) {
    TypeTrial trial{.type = static_cast<int>(header.CompressionType)};
    TrackReader reader(source.Film(), source.Track());
    if (reader.Open()) return Error{Fault::Unreadable, 0};
    const bool differential = codec::CodingType(trial.type).differential;
    for (const Part& part : parts) {
        RecordPipeline pipeline(reader, {.first = part.first,
                                         .end = part.end,
                                         .chain = ChainOf(header),
                                         .jobs = jobs,
                                         .make_stage = MakeCoded(header)});
        while (const PipelineRecord* record = pipeline.Next()) {
            // A run in the middle begins with a key record that the whole track would not have.
            const bool only_here = differential && record->number == part.first && part.first > 0 &&
                                   header.KeyRecordOf(record->number) != record->number;
            if (!only_here) trial.bytes += record->made.size();
        }
        const Error& why = pipeline.Why();
        if (why.fault == Fault::EndsEarly) break; // the sound ends here
        if (why.fault != Fault::None) return why;
    }
    return trial;
}

/// 0: records can be replaced one by one; 1: any can be reached; 2: only in order.
int Inconvenience(int id) {
    const auto& type = codec::CodingType(id);
    if (!type.differential) return 0;
    return type.forces_key ? 1 : 2;
}

} // namespace

Result<BestType> FindBestType(const TrackReader& reader, std::optional<std::uint32_t> key_interval,
                              unsigned jobs) {
    const TrackDescription& track = reader.Track();
    ContainerHeader header = SourceHeader(track);
    if (key_interval) header.KeyInterval = *key_interval;
    const std::vector<Part> parts = PartsOf(reader, header.RecordLength);
    BestType best{.is_sample = parts.size() > 1 || parts.front().end < reader.Count()};
    for (const Part& part : parts)
        best.records_tried += part.end - part.first;
    const auto progress = ShowProgress({});
    const auto types = codec::AllCompressionTypes();
    for (std::size_t i = 0; i < types.size(); ++i) {
        if (!progress->Update(static_cast<std::int32_t>(i),
                              static_cast<std::int32_t>(types.size())))
            return Error{Fault::Stopped, 0};
        if (!types[i].lossless || WhyNotConvertible(track, types[i].id)) continue;
        ContainerHeader tried = header;
        tried.CompressionType = static_cast<std::uint32_t>(types[i].id);
        if (!SettleKeyInterval(tried, key_interval)) continue;
        const Result<TypeTrial> trial = Try(reader, tried, parts, jobs);
        if (!trial) return trial.Why();
        best.trials.push_back(trial.Value());
    }
    const auto rank = [](const TypeTrial& trial) {
        return std::tuple(trial.bytes, Inconvenience(trial.type), trial.type);
    };
    std::ranges::sort(best.trials, {}, rank);
    if (best.trials.empty()) return Error{Fault::BadValue, 0};
    best.type = best.trials.front().type;
    return best;
}

} // namespace kelvo::tool
