#include "container/RecordWalk.h"

#include "container/Compressionekel.h"
#include "container/RecordBytes.h"
#include "container/RecordFrame.h"
#include "container/codec/CompressionTypes.h"
#include "framework/base/ByteReader.h"
#include "framework/base/ProgressDisplay.h"
#include "platform/base/files.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace kelvo {

namespace {

constexpr char kProgressTitle[] = "Ricostruzione indici...";
constexpr std::uint32_t kProgressInterval = 10;

/// Numbers out of a file, in ascending places mostly: small records share one read.
class NumberReader {
public:
    NumberReader(HFILE file, const TrackWindow& window) : file_(file), window_(window) {}

    /// @param offset  from the window's start
    std::optional<std::uint32_t> At(std::uint64_t offset) {
        if (offset + 4 > window_.Size()) return std::nullopt;
        if (offset < start_ || offset + 4 > start_ + count_) Fill(offset);
        if (offset + 4 > start_ + count_) return std::nullopt;
        const auto first = static_cast<std::size_t>(offset - start_);
        return ByteReader{ByteView{bytes_}.subspan(first, 4)}.ReadU32();
    }

private:
    void Fill(std::uint64_t offset) {
        const std::size_t wanted =
            std::min<std::size_t>(bytes_.size(), window_.Size() - static_cast<std::size_t>(offset));
        const std::int64_t count =
            platform::ReadFileAt(file_, window_.start + offset, bytes_.data(), wanted);
        start_ = offset;
        count_ = count > 0 ? static_cast<std::size_t>(count) : 0;
    }

    HFILE file_;
    TrackWindow window_;
    std::array<std::uint8_t, 4096> bytes_{};
    std::uint64_t start_ = 0;
    std::size_t count_ = 0;
};

/// Decodes records to see whether they are some; needed only behind those that the header counts.
class RecordTrial {
public:
    RecordTrial(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                const RecordIndex& index)
        : file_(file), window_(window), header_(header), index_(index) {}

    /// Whether the bytes at `offset` decode to exactly one record, number index.Count().
    bool Decodes(std::uint64_t offset, std::uint32_t stored_length) {
        if (IsRaw(header_)) return stored_length == header_.RecordLength;
        if (!ready_ && !Prepare()) return false;
        // What a differential record builds on must have been decoded before it.
        for (; next_ < index_.Count(); ++next_) {
            const std::uint32_t payload = index_.RecordOffset(next_) + kStoredLengthBytes;
            Decode(payload, index_.SidePosition(next_) - payload);
        }
        ++next_;
        return Decode(offset + kStoredLengthBytes, stored_length);
    }

private:
    bool Prepare() {
        if (!catalogue_.SetCompressionType(static_cast<int>(header_.CompressionType),
                                           static_cast<int>(header_.RecordLength))) {
            return false;
        }
        next_ = catalogue_.IsDifferential() && index_.Count() > 0
                    ? header_.KeyRecordOf(index_.Count() - 1)
                    : index_.Count();
        ready_ = record_.Allocate(header_.RecordLength) &&
                 stored_.Allocate(PayloadRoom(catalogue_, header_));
        return ready_;
    }
    bool Decode(std::uint64_t offset, std::uint32_t stored_length) {
        if (stored_length > stored_.Size()) return false;
        const ByteSpan stored = stored_.Span().first(stored_length);
        if (platform::ReadFileAt(file_, window_.start + offset, stored.data(), stored.size()) !=
            static_cast<std::int64_t>(stored.size())) {
            return false;
        }
        return catalogue_.DecodeRecord(stored, record_.Span()).described == header_.RecordLength;
    }

    HFILE file_;
    TrackWindow window_;
    const ContainerHeader& header_;
    const RecordIndex& index_;
    Compressionekel catalogue_;
    RecordBytes record_;
    RecordBytes stored_;
    std::uint32_t next_ = 0;
    bool ready_ = false;
};

bool ReadNumbers(HFILE file, std::uint64_t offset, std::span<std::uint32_t> values) {
    return platform::ReadFileAt(file, offset, values.data(), values.size_bytes()) ==
           static_cast<std::int64_t>(values.size_bytes());
}

} // namespace

bool IndexAgreesWithRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header) {
    if (CheckIndexFits(header, window.Size()).fault != Fault::None) return false;
    RecordIndex index;
    const std::uint64_t place = std::uint64_t{window.start} + header.IndexOffset;
    if (!index.Size(header.RecordCount) || !ReadNumbers(file, place, index.Offsets()) ||
        !ReadNumbers(file, place + index.Offsets().size_bytes(), index.SidePositions())) {
        return false;
    }
    NumberReader numbers(file, window);
    std::uint64_t expected = header.FirstRecordOffset();
    for (std::uint32_t record = 0; record < index.Count(); ++record) {
        const std::optional<std::uint32_t> stored_length = numbers.At(expected);
        if (!stored_length || index.RecordOffset(record) != expected) return false;
        expected += kStoredLengthBytes + std::uint64_t{*stored_length};
        if (index.SidePosition(record) != expected) return false;
        expected += header.SideLength;
    }
    return index.End() == expected && expected <= header.IndexOffset;
}

Error WalkRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                  RecordIndex& index) {
    const codec::CompressionType& type =
        codec::CodingType(static_cast<int>(header.CompressionType));
    if (!index.Start(static_cast<std::uint32_t>(header.FirstRecordOffset()))) {
        return {Fault::TooLarge, 0};
    }
    NumberReader numbers(file, window);
    RecordTrial trial(file, window, header, index);
    const auto progress = ShowProgress(kProgressTitle);
    for (;;) {
        const std::uint64_t offset = index.End();
        if (index.Count() % kProgressInterval == 0 &&
            !progress->Update(static_cast<std::int32_t>(offset),
                              static_cast<std::int32_t>(window.Size()))) {
            return {Fault::Stopped, window.start + offset};
        }
        const std::optional<std::uint32_t> stored_length = numbers.At(offset);
        if (!stored_length) break;
        const std::uint64_t side = offset + kStoredLengthBytes + *stored_length;
        const std::uint64_t end = side + header.SideLength;
        if (end > window.Size()) break;
        // What no stored record of this length could fill is none.
        if (header.RecordLength > codec::GreatestRecordLength(type, *stored_length)) break;
        if (IsRaw(header) && *stored_length != header.RecordLength) break;
        if (index.Count() >= header.RecordCount) {
            // Here an old index may begin, with the offset of the first record.
            const bool is_index =
                *stored_length == header.FirstRecordOffset() &&
                numbers.At(offset + 4) == index.RecordOffset(std::min(1U, index.Count()));
            if (is_index || !trial.Decodes(offset, *stored_length)) break;
        }
        if (!index.Append(static_cast<std::uint32_t>(side), static_cast<std::uint32_t>(end))) {
            return {Fault::TooLarge, window.start + offset};
        }
    }
    return {};
}

} // namespace kelvo
