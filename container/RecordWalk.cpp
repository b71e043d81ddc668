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

/// Decodes records to see whether they are some; needed only behind those that the header counts,
/// and where the old index knows another length.
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
        const std::uint32_t count = index_.Count();
        const bool builds = catalogue_.IsDifferential() && count > 0;
        next_ = std::max(next_, builds ? header_.KeyRecordOf(count - 1) : count);
        for (; next_ < count; ++next_) {
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

/// Finds the record behind those that the index has.
class RecordFinder {
public:
    enum class Kind : std::uint8_t {
        Record,
        End,      ///< the file, or the records, end here
        NoRecord, ///< what stands here is none
    };
    struct Found {
        Kind kind = Kind::End;
        std::uint32_t stored_length = 0;
    };

    RecordFinder(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                 const RecordIndex* old_index, const RecordIndex& index)
        : window_(window), header_(header), old_index_(old_index), index_(index),
          numbers_(file, window), trial_(file, window, header, index) {}

    Found Next() {
        const std::uint32_t offset = index_.End();
        const std::optional<std::uint32_t> said = numbers_.At(offset);
        if (!said) return {};
        const Kind kind = KindOf(offset, *said);
        if (index_.Count() < header_.RecordCount) {
            const std::optional<std::uint32_t> indexed = IndexedLength(offset);
            const bool differs = indexed && *indexed != *said;
            if (differs && (kind != Kind::Record || !trial_.Decodes(offset, *said))) {
                return {Kind::Record, *indexed};
            }
        } else if (kind == Kind::Record &&
                   (IsOldIndex(offset, *said) || !trial_.Decodes(offset, *said))) {
            return {};
        }
        return {kind, *said};
    }

private:
    Kind KindOf(std::uint64_t offset, std::uint32_t stored_length) const {
        const std::uint64_t side = offset + kStoredLengthBytes + stored_length;
        if (side + header_.SideLength > window_.Size()) return Kind::End;
        // What no stored record of this length could fill is none.
        const codec::CompressionType& type =
            codec::CodingType(static_cast<int>(header_.CompressionType));
        if (header_.RecordLength > codec::GreatestRecordLength(type, stored_length)) {
            return Kind::NoRecord;
        }
        return IsRaw(header_) && stored_length != header_.RecordLength ? Kind::NoRecord
                                                                       : Kind::Record;
    }

    /// What the old index says of the next record, if its entry fits here and agrees with itself.
    std::optional<std::uint32_t> IndexedLength(std::uint32_t offset) const {
        if (old_index_ == nullptr || old_index_->RecordOffset(index_.Count()) != offset) {
            return std::nullopt;
        }
        const std::uint64_t payload = std::uint64_t{offset} + kStoredLengthBytes;
        const std::uint64_t side = old_index_->SidePosition(index_.Count());
        const std::uint64_t end = side + header_.SideLength;
        const bool sound = side >= payload && end <= header_.IndexOffset &&
                           end == old_index_->RecordOffset(index_.Count() + 1);
        if (!sound) return std::nullopt;
        return static_cast<std::uint32_t>(side - payload);
    }

    /// An index that no header names begins with the offset of the first record.
    bool IsOldIndex(std::uint64_t offset, std::uint32_t first) {
        return first == header_.FirstRecordOffset() &&
               numbers_.At(offset + 4) == index_.RecordOffset(std::min(1U, index_.Count()));
    }

    TrackWindow window_;
    const ContainerHeader& header_;
    const RecordIndex* old_index_;
    const RecordIndex& index_;
    NumberReader numbers_;
    RecordTrial trial_;
};

bool ReadNumbers(HFILE file, std::uint64_t offset, std::span<std::uint32_t> values) {
    return platform::ReadFileAt(file, offset, values.data(), values.size_bytes()) ==
           static_cast<std::int64_t>(values.size_bytes());
}

} // namespace

std::optional<RecordIndex> ReadOldIndex(HFILE file, const TrackWindow& window,
                                        const ContainerHeader& header) {
    if (CheckIndexFits(header, window.Size()).fault != Fault::None) return std::nullopt;
    RecordIndex index;
    const std::uint64_t place = std::uint64_t{window.start} + header.IndexOffset;
    if (!index.Size(header.RecordCount) || !ReadNumbers(file, place, index.Offsets()) ||
        !ReadNumbers(file, place + index.Offsets().size_bytes(), index.SidePositions())) {
        return std::nullopt;
    }
    return index;
}

bool IndexAgreesWithRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                            const RecordIndex& old_index) {
    NumberReader numbers(file, window);
    std::uint64_t expected = header.FirstRecordOffset();
    for (std::uint32_t record = 0; record < old_index.Count(); ++record) {
        const std::optional<std::uint32_t> stored_length = numbers.At(expected);
        if (!stored_length || old_index.RecordOffset(record) != expected) return false;
        expected += kStoredLengthBytes + std::uint64_t{*stored_length};
        if (old_index.SidePosition(record) != expected) return false;
        expected += header.SideLength;
    }
    return old_index.End() == expected && expected <= header.IndexOffset;
}

Error WalkRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                  const RecordIndex* old_index, RecordIndex& index) {
    if (!index.Start(static_cast<std::uint32_t>(header.FirstRecordOffset()))) {
        return {Fault::TooLarge, 0};
    }
    RecordFinder finder(file, window, header, old_index, index);
    const auto progress = ShowProgress(kProgressTitle);
    for (;;) {
        const std::uint64_t offset = window.start + std::uint64_t{index.End()};
        if (index.Count() % kProgressInterval == 0 &&
            !progress->Update(static_cast<std::int32_t>(index.End()),
                              static_cast<std::int32_t>(window.Size()))) {
            return {Fault::Stopped, offset};
        }
        const RecordFinder::Found found = finder.Next();
        if (found.kind == RecordFinder::Kind::NoRecord && index.Count() == 0 &&
            header.RecordCount > 0) {
            return {Fault::BadValue, offset}; // to drop them all would mend nothing
        }
        if (found.kind != RecordFinder::Kind::Record) return {};
        const auto side =
            static_cast<std::uint32_t>(index.End() + kStoredLengthBytes + found.stored_length);
        if (!index.Append(side, side + header.SideLength)) return {Fault::TooLarge, offset};
    }
}

} // namespace kelvo
