#include "container/SalvageWriting.h"

#include "container/Compressionekel.h"
#include "container/RecordBytes.h"
#include "container/RecordFrame.h"
#include "container/RecordProbe.h"
#include "platform/base/files.h"

#include <algorithm>
#include <cstddef>
#include <tuple>

namespace kelvo {

namespace {

constexpr std::uint32_t kProgressInterval = 16;

class SalvageWriter {
public:
    SalvageWriter(RewriteTarget& target, HFILE file, const TrackWindow& window,
                  const ContainerHeader& header, const RecordMap& map)
        : target_(target), file_(file), window_(window), header_(header), map_(map) {}

    Error Begin(ByteView user_header) {
        ContainerHeader header = header_;
        header.RecordCount = map_.index.Count();
        if (header_.RecordLength > RecordProbe::kLargestProved) return {Fault::TooLarge, 0};
        if (!IsRaw(header_) &&
            !catalogue_.SetCompressionType(static_cast<int>(header_.CompressionType),
                                           static_cast<int>(header_.RecordLength))) {
            return {Fault::BadValue, 0};
        }
        room_ = PayloadRoom(catalogue_, header_);
        if (!record_.Allocate(header_.RecordLength) || !before_.Allocate(header_.RecordLength) ||
            !side_.Allocate(header_.SideLength) || !stored_.Allocate(room_)) {
            return {Fault::TooLarge, 0};
        }
        return target_.BeginContainer(header, user_header);
    }

    Error Write(std::uint32_t n, std::optional<std::uint8_t> silence) {
        const bool lost = map_.verdicts[n].state == RecordState::Lost;
        if (catalogue_.IsDifferential()) std::ranges::copy(record_.View(), before_.Span().begin());
        if (lost) {
            if (silence) std::ranges::fill(record_.Span(), *silence);
            return AppendAnew(n);
        }
        const std::uint64_t payload =
            std::uint64_t{map_.index.RecordOffset(n)} + kStoredLengthBytes;
        const std::size_t length = map_.index.SidePosition(n) - payload;
        const ByteSpan stored = stored_.Span().first(std::min(length, room_));
        if (!Read(payload, stored) || !Read(map_.index.SidePosition(n), side_.Span())) {
            return {Fault::Unreadable, window_.start + payload};
        }
        Decode(stored);
        // Whoever builds on a record that changed must find what it is now.
        const bool decodes = map_.verdicts[n].reason != RecordReason::NotDecoding;
        return decodes ? target_.AppendStored(stored, side_.View()) : AppendAnew(n);
    }

private:
    bool Read(std::uint64_t offset, ByteSpan bytes) const {
        return platform::ReadFileAt(file_, window_.start + offset, bytes.data(), bytes.size()) ==
               static_cast<std::int64_t>(bytes.size());
    }

    void Decode(ByteView stored) {
        if (IsRaw(header_)) {
            std::ranges::copy(stored.first(std::min(stored.size(), record_.Size())),
                              record_.Span().begin());
        } else {
            static_cast<void>(catalogue_.DecodeRecord(stored, record_.Span())); // as far as it goes
        }
    }

    /// The record as it now is, with the side block read last.
    Error AppendAnew(std::uint32_t n) {
        if (IsRaw(header_)) return target_.AppendStored(record_.View(), side_.View());
        // Afresh, so that the coder has no other record in mind than the one before.
        if (!catalogue_.SetCompressionType(static_cast<int>(header_.CompressionType),
                                           static_cast<int>(header_.RecordLength))) {
            return {Fault::TooLarge, 0};
        }
        std::size_t length = 0;
        if (!catalogue_.IsDifferential()) {
            length = catalogue_.Compress(record_.View(), stored_.Span());
        } else if (header_.KeyRecordOf(n) == n) {
            length = catalogue_.CompressKey(record_.View(), stored_.Span());
        } else {
            std::ignore = catalogue_.CompressKey(before_.View(), stored_.Span());
            length = catalogue_.Compress(record_.View(), stored_.Span());
        }
        return target_.AppendStored(stored_.View().first(length), side_.View());
    }

    RewriteTarget& target_;
    HFILE file_;
    TrackWindow window_;
    const ContainerHeader& header_;
    const RecordMap& map_;
    Compressionekel catalogue_;
    RecordBytes record_;
    RecordBytes before_; ///< of a differential type, the record before it
    RecordBytes side_;
    RecordBytes stored_;
    std::size_t room_ = 0;
};

} // namespace

Error WriteSalvaged(RewriteTarget& target, HFILE file, const TrackWindow& window,
                    const ContainerHeader& header, ByteView user_header, const RecordMap& map,
                    std::optional<std::uint8_t> silence, const MapProgress& step) {
    SalvageWriter writer(target, file, window, header, map);
    if (const Error error = writer.Begin(user_header); error.fault != Fault::None) return error;
    for (std::uint32_t n = 0; n < map.index.Count(); ++n) {
        if (n % kProgressInterval == 0 && step && !step(map.index.RecordOffset(n))) {
            return {Fault::Stopped, map.index.RecordOffset(n)};
        }
        if (const Error error = writer.Write(n, silence); error.fault != Fault::None) return error;
    }
    return target.EndContainer();
}

} // namespace kelvo
