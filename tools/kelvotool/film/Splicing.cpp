#include "tools/kelvotool/film/Splicing.h"

#include "container/RecordFrame.h"
#include "container/codec/CompressionTypes.h"
#include "framework/base/ByteReader.h"
#include "media/VideoHeader.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <algorithm>

namespace kelvo::tool {

namespace {

const codec::CompressionType& TypeOf(const ContainerHeader& header) {
    return codec::CodingType(static_cast<int>(header.CompressionType));
}

/// Whether a record of a track decodes without the one before it.
bool IsKeyRecord(const ContainerHeader& header, std::uint32_t record) {
    const auto& type = TypeOf(header);
    if (!type.differential || record == 0) return true;
    return type.forces_key && header.KeyRecordOf(record) == record;
}

} // namespace

std::optional<Problem> PieceSource::Open() {
    if (auto problem = decoded_.Open()) return problem;
    return IsVorbis() ? std::nullopt : stored_.Open();
}

std::optional<std::uint32_t> PieceSource::SyncNumberOf(std::uint32_t image) {
    std::uint32_t length = 0;
    const auto* const stored = stored_.Container().ReadRawRecord(static_cast<int>(image), length);
    if (stored == nullptr || stored_.Side().size() < kVideoSideLength) return std::nullopt;
    const std::uint32_t number = ByteReader{stored_.Side()}.ReadU32();
    return number == kNeverLinked ? std::nullopt : std::optional(number);
}

bool HaveSameCoding(const ContainerHeader& header, const TrackDescription& track) {
    return track.form == TrackForm::Container && track.container &&
           track.container->CompressionType == header.CompressionType &&
           track.container->RecordLength == header.RecordLength &&
           track.container->SideLength == header.SideLength;
}

TrackSplicer::TrackSplicer(RewriteTarget& target, const ContainerHeader& header, Reporter& reporter)
    : target_(target), header_(header), reporter_(reporter),
      differential_(TypeOf(header).differential), forces_key_(TypeOf(header).forces_key),
      side_(header.SideLength) {}

Error TrackSplicer::Begin(ByteView user_header) {
    const Error error = target_.BeginContainer(header_, user_header);
    if (error.fault != Fault::None) return error;
    const bool can_code = catalogue_.SetCompressionType(static_cast<int>(header_.CompressionType),
                                                        static_cast<int>(header_.RecordLength)) ||
                          IsRaw(header_);
    if (!can_code) return {Fault::BadValue, 0};
    return frame_.Allocate(FrameRoom(catalogue_, header_)) ? Error{} : Error{Fault::TooLarge, 0};
}

/// Reading by number begins at these.
bool TrackSplicer::MustBeKey() const {
    return count_ == 0 || (forces_key_ && header_.KeyRecordOf(count_) == count_);
}

bool TrackSplicer::CanCopy(const PieceSource& source, std::uint32_t record) const {
    if (!HaveSameCoding(header_, source.Track())) return false;
    if (!differential_) return true;
    if (IsKeyRecord(*source.Track().container, record)) return true;
    if (MustBeKey()) return false;
    return last_source_ == &source && last_record_ + 1 == record;
}

Error TrackSplicer::Append(PieceSource& source, std::uint32_t first, std::uint32_t end,
                           const SideChange& change) {
    for (std::uint32_t record = first; record < end; ++record) {
        if (StopRequested()) return {Fault::Stopped, 0};
        const bool copies = CanCopy(source, record);
        const Error error = copies ? Copy(source, record, change) : Code(source, record, change);
        if (error.fault != Fault::None) return error;
        last_was_coded_ = !copies;
        last_source_ = &source;
        last_record_ = record;
        ++count_;
        if (!copies) ++coded_;
    }
    return {};
}

Error TrackSplicer::Copy(PieceSource& source, std::uint32_t record, const SideChange& change) {
    ZFilekel& container = source.stored_.Container();
    std::uint32_t length = 0;
    const auto* const stored = container.ReadRawRecord(static_cast<int>(record), length);
    if (stored == nullptr) return container.LastError();
    if (const auto problem = source.stored_.RecordProblem(record)) reporter_.Report(*problem);
    std::ranges::copy(container.SideBuffer(), side_.begin());
    if (change) change(record, side_);
    return target_.AppendStored({stored, length}, side_);
}

Error TrackSplicer::Code(PieceSource& source, std::uint32_t record, const SideChange& change) {
    TrackReader& reader = source.decoded_;
    if (!reader.HasMore()) return {Fault::EndsEarly, 0};
    const std::uint32_t at = reader.IsVorbis()
                                 ? static_cast<std::uint32_t>(reader.Vorbis().CurrentFrame())
                                 : reader.Container().CurrentRecord();
    const bool read = at == record && record > 0 ? reader.ReadNext() : reader.ReadByNumber(record);
    if (!read) return {Fault::Unreadable, 0};
    if (const auto problem = reader.RecordProblem(record)) reporter_.Report(*problem);
    std::ranges::fill(side_, std::uint8_t{0});
    std::ranges::copy(reader.Side().first(std::min(reader.Side().size(), side_.size())),
                      side_.begin());
    if (change) change(record, side_);
    return CodeRecord(reader.Record(), side_);
}

Error TrackSplicer::CodeRecord(ByteView record, ByteView side) {
    // What was copied, the coder has not seen: it begins anew, with a key record.
    if (differential_ && !last_was_coded_ &&
        !catalogue_.SetCompressionType(static_cast<int>(header_.CompressionType),
                                       static_cast<int>(header_.RecordLength))) {
        return {Fault::TooLarge, 0};
    }
    if (record.size() != header_.RecordLength) return {Fault::Mismatch, 0};
    const ByteView frame = EncodeFrame(catalogue_, header_, count_, record, side, frame_.Span());
    if (frame.empty()) return {Fault::BadValue, 0};
    return target_.AppendStored(
        frame.subspan(kStoredLengthBytes, frame.size() - kStoredLengthBytes - side.size()), side);
}

Error TrackSplicer::AppendPlain(std::uint8_t value) {
    plain_.assign(header_.RecordLength, value);
    std::ranges::fill(side_, std::uint8_t{0});
    const Error error = CodeRecord(plain_, side_);
    if (error.fault != Fault::None) return error;
    last_was_coded_ = true;
    last_source_ = nullptr;
    ++count_;
    ++coded_;
    return {};
}

} // namespace kelvo::tool
