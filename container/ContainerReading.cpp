// Reading records: in sequence, by number, through key records, and as they are stored.

#include "container/RecordFrame.h"
#include "container/ZFilekel.h"
#include "framework/base/ByteReader.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr char kCorruptFile[] = "FILE CORROTTO!";
constexpr char kOnlyForRead[] =
    "L'operazione richiesta può essere eseguita solo su un file aperto in OpenForRead!";

} // namespace

std::uint64_t ZFilekel::FileOffset() const {
    return static_cast<std::uint64_t>(WindowBase() + Position());
}

std::uint64_t ZFilekel::RecordFileOffset(std::uint32_t record) const {
    if (record >= index_.Offsets().size()) return 0;
    return static_cast<std::uint64_t>(WindowBase()) + index_.RecordOffset(record);
}

std::uint32_t ZFilekel::StoredLength(std::uint32_t record) const {
    if (record >= index_.Count()) return 0;
    const std::uint64_t payload = std::uint64_t{index_.RecordOffset(record)} + kStoredLengthBytes;
    const std::uint64_t side = index_.SidePosition(record);
    return side < payload ? 0 : static_cast<std::uint32_t>(side - payload);
}

bool ZFilekel::SeekToRecord(std::uint32_t record) {
    const std::uint32_t offset = index_.RecordOffset(record);
    current_record_ = record;
    return Position() == offset || Seek(offset) || Fail(Fault::Unreadable, FileOffset());
}

/// One read for the whole record, where the index says how long it is.
bool ZFilekel::ReadStoredAsIndexed(StoredRecord& stored) {
    if (current_record_ >= index_.Count()) return false;
    if (index_.RecordOffset(current_record_) != Position()) return false;
    const std::size_t length = StoredLength(current_record_);
    const std::size_t room = frame_buffer_.Size() - kStoredLengthBytes - SideLength();
    if (length > room || (IsRaw(header_) && length != RecordLength())) return false;
    const ByteSpan frame = frame_buffer_.Span().first(kStoredLengthBytes + length + SideLength());
    if (!ReadAll(frame)) return false;
    stored.stored_length = ByteReader{frame}.ReadU32();
    stored.available = length;
    stored.side_available = true;
    stored.as_indexed = stored.stored_length == length;
    return stored.as_indexed;
}

/// The slow way, for a record that is not what the index says, or is not all there.
/// @return true when the record is all there
bool ZFilekel::ReadStoredAsItSays(StoredRecord& stored) {
    const ByteSpan frame = frame_buffer_.Span();
    const std::int64_t start = Position();
    stored.available = 0;
    stored.side_available = false;
    if (!ReadAll(frame.first(kStoredLengthBytes))) return false;
    stored.stored_length = ByteReader{frame}.ReadU32();
    const std::size_t payload_length = IsRaw(header_) ? RecordLength() : stored.stored_length;
    const std::size_t room = frame.size() - kStoredLengthBytes - SideLength();
    stored.available = ReadSome(frame.subspan(kStoredLengthBytes, std::min(payload_length, room)));
    if (stored.available < payload_length) {
        const std::int64_t behind =
            start + static_cast<std::int64_t>(kStoredLengthBytes + payload_length);
        if (behind > Size() || !Seek(behind)) return false;
    }
    const ByteSpan side = frame.subspan(kStoredLengthBytes + stored.available, SideLength());
    stored.side_available = ReadAll(side);
    return stored.side_available && stored.available == payload_length;
}

/// Fills the frame buffer with the record at the position, and goes behind it.
/// @return false when the system failed; damage is in last_error_
bool ZFilekel::ReadStored(StoredRecord& stored) {
    const std::int64_t start = Position();
    stored.file_offset = FileOffset();
    if (ReadStoredAsIndexed(stored)) return true;
    if (Position() != start && !Seek(start)) return Fail(Fault::Unreadable, stored.file_offset);
    const bool whole = ReadStoredAsItSays(stored);
    if (ReadFailed()) return Fail(Fault::Unreadable, stored.file_offset);
    if (!whole) {
        Fail(Fault::EndsEarly, stored.file_offset);
    } else if (mode_ != Mode::IndexRebuild) { // which has no index yet
        Fail(Fault::Mismatch, stored.file_offset);
    }
    return start != EntryOffset() || FollowIndex(stored);
}

/// Where the index has the current record, if the entry agrees with itself: its side block ends
/// where the next record begins. Otherwise -1.
std::int64_t ZFilekel::EntryOffset() {
    if (current_record_ >= index_.Count()) return -1;
    const std::uint64_t side_end =
        std::uint64_t{index_.SidePosition(current_record_)} + SideLength();
    const bool sound = side_end == index_.RecordOffset(current_record_ + 1) &&
                       side_end <= static_cast<std::uint64_t>(Size());
    return sound ? std::int64_t{index_.RecordOffset(current_record_)} : -1;
}

/// Where a record whose length is damaged has its side block, and where the next one begins, the
/// index knows better.
bool ZFilekel::FollowIndex(StoredRecord& stored) {
    const ByteSpan side =
        frame_buffer_.Span().subspan(kStoredLengthBytes + stored.available, SideLength());
    stored.side_available = Seek(index_.SidePosition(current_record_)) && ReadAll(side);
    return stored.side_available || Fail(Fault::Unreadable, stored.file_offset);
}

void ZFilekel::TakeSideBlock(const StoredRecord& stored) {
    if (!stored.side_available) return;
    std::ranges::copy(
        frame_buffer_.View().subspan(kStoredLengthBytes + stored.available, SideLength()),
        side_buffer_.Span().begin());
}

/// @return false when the record did not decode to its length; the box was shown
bool ZFilekel::DecodeStored(const StoredRecord& stored) {
    const ByteView payload = frame_buffer_.View().subspan(kStoredLengthBytes, stored.available);
    bool sound = true;
    if (IsRaw(header_)) {
        if (stored.stored_length != RecordLength()) Fail(Fault::BadValue, stored.file_offset);
        sound = stored.stored_length == RecordLength() && payload.size() == RecordLength();
        std::ranges::copy(payload, record_buffer_.Span().begin());
    } else {
        const Decoded decoded = DecodeRecord(payload, record_buffer_.Span());
        if (decoded.fault != Fault::None) Fail(decoded.fault, stored.file_offset);
        sound = decoded.described == RecordLength();
    }
    record_is_damaged_ = !sound;
    // Of a film that was opened as a damaged one, everything was said then.
    return sound || (!salvaged_ && ErrorBox(kCorruptFile));
}

/// The record at the position; its number is current_record_.
bool ZFilekel::ReadHere() {
    if (!CanCode() && !IsRaw(header_)) return Fail(Fault::BadValue, FileOffset());
    record_is_lost_ = IsLost(current_record_);
    if (record_is_lost_) return PassLostRecord();
    StoredRecord stored;
    if (!ReadStored(stored)) return false;
    TakeSideBlock(stored);
    DecodeStored(stored);
    ++current_record_;
    return true;
}

bool ZFilekel::ReadNextRecord() {
    if (mode_ != Mode::ForRead) return ErrorBox(kOnlyForRead);
    last_error_ = {};
    if (current_record_ >= RecordCount()) return false;
    return ReadHere();
}

/// The records [first, first + count), in order. A fault of an earlier one is kept: what is decoded
/// over it is wrong, too.
bool ZFilekel::ReadRun(std::uint32_t first, std::uint32_t count) {
    if (!SeekToRecord(first)) return false;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!ReadHere()) return false;
    }
    return true;
}

bool ZFilekel::ReadRecord(int record) {
    last_error_ = {};
    if (record < 0 || static_cast<std::uint32_t>(record) >= RecordCount()) return false;
    const auto number = static_cast<std::uint32_t>(record);
    const std::uint32_t first = FirstToDecode(number);
    return ReadRun(first, number - first + 1);
}

bool ZFilekel::GoToRecord(int record) {
    if (mode_ == Mode::Closed || !IsOpen() || RecordCount() == 0) return false;
    last_error_ = {};
    const std::uint32_t number =
        record < 0 ? 0 : std::min(static_cast<std::uint32_t>(record), RecordCount() - 1);
    const std::uint32_t first = FirstToDecode(number);
    return ReadRun(first, number - first);
}

const std::uint8_t* ZFilekel::ReadRawRecord(int record, std::uint32_t& stored_length) {
    last_error_ = {};
    if (record < 0 || static_cast<std::uint32_t>(record) >= RecordCount()) return nullptr;
    if (IsLost(static_cast<std::uint32_t>(record))) {
        Fail(Fault::Missing, RecordFileOffset(static_cast<std::uint32_t>(record)));
        return nullptr;
    }
    StoredRecord stored;
    if (!SeekToRecord(static_cast<std::uint32_t>(record)) || !ReadStored(stored)) return nullptr;
    TakeSideBlock(stored);
    stored_length = static_cast<std::uint32_t>(stored.available);
    ++current_record_;
    return frame_buffer_.View().data() + kStoredLengthBytes;
}

} // namespace kelvo
