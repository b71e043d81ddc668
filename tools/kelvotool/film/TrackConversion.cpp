#include "tools/kelvotool/film/TrackConversion.h"

#include "container/codec/CompressionTypes.h"
#include "framework/base/ProgressDisplay.h"

#include <algorithm>
#include <climits>

namespace kelvo::tool {

namespace {

constexpr Error kStopped{Fault::Stopped, 0};

std::int32_t ForProgress(std::uint32_t number) {
    return static_cast<std::int32_t>(std::min<std::uint32_t>(number, INT_MAX));
}

} // namespace

/// A lossy type would lose again what it lost already.
bool TrackConversion::KeepsStoredRecords() const {
    if (reader_.IsVorbis()) return false;
    const auto* const type = codec::FindCompressionType(static_cast<int>(header_.CompressionType));
    return header_.CompressionType == reader_.Container().CompressionType() && type != nullptr &&
           !type->lossless;
}

Error TrackConversion::Write(RewriteTarget& target) {
    expected_.clear();
    Error error = target.BeginContainer(header_, reader_.Track().user_header);
    if (error.fault == Fault::None) {
        error = KeepsStoredRecords() ? CopyStored(target) : CodeRecords(target);
    }
    if (error.fault == Fault::None) error = target.EndContainer();
    window_ = target.LastContainer();
    return error;
}

Error TrackConversion::CodeRecords(RewriteTarget& target) {
    const auto progress = ShowProgress({});
    const std::int32_t total = ForProgress(reader_.Count());
    {
        RecordPipeline pipeline(
            reader_, {.chain = ChainOf(header_), .jobs = jobs_, .make_stage = MakeCoded(header_)});
        while (const PipelineRecord* record = pipeline.Next()) {
            if (record->problem) reporter_.Report(*record->problem);
            const Error error = target.AppendStored(record->made, record->side);
            if (error.fault != Fault::None) return error;
            expected_.push_back(record->fingerprint);
            if (!progress->Update(ForProgress(record->number / 2), total)) return kStopped;
        }
        if (pipeline.Why().fault != Fault::None) return pipeline.Why();
    }
    if (reader_.IsVorbis() && reader_.Vorbis().StreamDamaged()) {
        reporter_.Report(
            reader_.Make(ProblemCode::StreamDamaged, "parts of its Ogg stream are lost or broken"));
    }
    return {};
}

Error TrackConversion::CopyStored(RewriteTarget& target) {
    const auto progress = ShowProgress({});
    const std::int32_t total = ForProgress(reader_.Count());
    TrackReader decoded(reader_.Film(), reader_.Track());
    if (decoded.Open()) return {Fault::Unreadable, 0};
    RecordPipeline pipeline(decoded, {.jobs = jobs_, .make_stage = MakeFingerprints()});
    while (const PipelineRecord* record = pipeline.Next()) {
        if (record->problem) reporter_.Report(*record->problem);
        std::uint32_t length = 0;
        ZFilekel& source = reader_.Container();
        const auto* const stored = source.ReadRawRecord(static_cast<int>(record->number), length);
        if (stored == nullptr) return source.LastError();
        const Error error = target.AppendStored({stored, length}, source.SideBuffer());
        if (error.fault != Fault::None) return error;
        // What a damaged one decodes to may depend on where it lies.
        expected_.push_back(record->problem ? kNotComparable : record->fingerprint);
        if (!progress->Update(ForProgress(record->number / 2), total)) return kStopped;
    }
    return pipeline.Why();
}

Error TrackConversion::Prove(const std::string& file) {
    const FilmDescription film{.name = file};
    TrackDescription track{.kind = reader_.Track().kind,
                           .form = TrackForm::Container,
                           .file = file,
                           .window = window_,
                           .container = header_};
    track.container->RecordCount = static_cast<std::uint32_t>(expected_.size());
    track.container->IndexOffset = static_cast<std::uint32_t>(window_.Size()); // not looked at
    TrackReader written(film, track);
    if (written.Open()) return {Fault::Mismatch, 0};
    const auto progress = ShowProgress({});
    const std::int32_t total = ForProgress(reader_.Count());
    RecordPipeline pipeline(written, {.jobs = jobs_, .make_stage = MakeFingerprints()});
    proved_ = 0;
    while (const PipelineRecord* record = pipeline.Next()) {
        const bool same =
            record->number < expected_.size() && (expected_[record->number] == kNotComparable ||
                                                  record->fingerprint == expected_[record->number]);
        if (!same) return {Fault::Mismatch, record->number};
        ++proved_;
        if (!progress->Update(total / 2 + ForProgress(record->number / 2), total)) return kStopped;
    }
    if (pipeline.Why().fault == Fault::Stopped) return kStopped;
    return proved_ == expected_.size() ? Error{} : Error{Fault::Mismatch, proved_};
}

} // namespace kelvo::tool
