// Opening a container: which file, which window of it, what its header and index claim, and the
// buffers that these claims need.

#include "container/RecordFrame.h"
#include "container/ZFilekel.h"
#include "container/codec/CompressionTypes.h"
#include "platform/base/durable_files.h"
#include "platform/base/file_names.h"
#include "platform/base/message_boxes.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <optional>
#include <string>

namespace kelvo {

namespace {

constexpr char kQuestionCaption[] = "ZFilekel";
constexpr char kEditingNeedsRecompression[] =
    "ATTENZIONE! - E' stata richiesta l'apertura del file in Read, Random-Write con possibilità di "
    "inserimento e cancellazione.\r\n"
    "Il file ha un tipo di codifica che non consente inserimento o cancellazione di records.\r\n"
    "COSA FARE?\r\n"
    "Premendo <Si> il file sarà ricompresso utilizzando una codifica appropriata, premendo <No> "
    "l'operazione sarà annullata\r\n\r\n"
    "RICOMPRIMERE IL FILE?";

constexpr std::uint32_t kEditableType = 9;

constexpr std::uint64_t kRecordLengthOffset = 4;

bool IsForWriting(ZFilekel::Mode mode) {
    return mode != ZFilekel::Mode::ForRead;
}

bool IsBareSelector(char selector) {
    return selector == 'N' || selector == 'n';
}

} // namespace

bool ZFilekel::OpenForRead(const CString& name, char selector) {
    return OpenInMode(name, Mode::ForRead, selector);
}

bool ZFilekel::OpenForReadIn(const CString& name, const TrackWindow& window) {
    if (mode_ != Mode::Closed || IsOpen()) return Fail(Fault::Busy);
    last_error_ = {};
    const auto fits = [&] {
        const bool inside =
            window.start < window.end && std::int64_t{window.end} <= opening_length_;
        return inside || Fail(Fault::EndsEarly, window.end);
    };
    const bool opened = OpenHandle(name, Mode::ForRead) && fits() &&
                        (SetWindow(window.start, window.end) || Fail(Fault::Unreadable)) &&
                        ReadHeader() && ReadIndex(Mode::ForRead) && FinishOpening(Mode::ForRead);
    return opened || Shut(false);
}

bool ZFilekel::OpenExisting(const CString& name) {
    return OpenInMode(name, Mode::Existing);
}

bool ZFilekel::OpenInMode(const CString& name, Mode mode, char selector) {
    assert(mode != Mode::Closed && mode != Mode::New);
    if (mode_ != Mode::Closed || IsOpen()) return Fail(Fault::Busy);
    last_error_ = {};
    const bool opened = OpenHandle(name, mode) && EnterWindow(mode, selector) && ReadHeader();
    if (!opened) return Shut(false);
    if (mode == Mode::IndexRebuild) return Shut(RebuildIndexInPlace());
    if (!ReadIndex(mode) || !FinishOpening(mode)) return Shut(false);
    return true;
}

bool ZFilekel::OpenHandle(const CString& name, Mode mode) {
    const std::optional<std::string> found =
        platform::ExistingFileName(ResolvePath(nullptr, name, nullptr).View());
    if (!found) return Fail(Fault::Missing);
    system_name_ = platform::WithoutLinks(*found);
    if (const Error error = UndoFile::Recover(system_name_); error.fault != Fault::None) {
        return Fail(error);
    }
    const bool opened = IsForWriting(mode) ? OpenReadWrite(name) : OpenReadOnly(name);
    if (!opened) return Fail(IsForWriting(mode) ? Fault::Unwritable : Fault::Unreadable);
    // Two programs that edit one file would each overwrite the other's records.
    if (IsForWriting(mode) && !platform::TryLock(Handle())) return Fail(Fault::Busy);
    opening_length_ = FileLength();
    return opening_length_ >= 0 || Fail(Fault::Unreadable);
}

bool ZFilekel::EnterWindow(Mode mode, char selector) {
    if (!IsFilmName(FileName().View()) || IsBareSelector(selector)) return true;
    std::array<std::uint8_t, AVDirectory::kBytes> bytes{};
    const bool read = ReadAll(bytes);
    const AVDirectory directory = ParseAVDirectory(bytes).Value();
    const auto length = static_cast<std::uint64_t>(opening_length_);
    if (IsForWriting(mode)) {
        // What would grow in a film's first track would run over its second. A container that only
        // bears the name of a film has no directory that fits.
        const bool is_film =
            read && (CheckTrackWindow(directory.audio, length).fault == Fault::None ||
                     CheckTrackWindow(directory.video, length).fault == Fault::None);
        if (is_film) return Fail(Fault::BadValue);
        return Seek(0) || Fail(Fault::Unreadable);
    }
    if (!read) return Fail(Fault::EndsEarly, length);
    const TrackWindow& window = directory.Of(selector);
    if (const Error error = CheckTrackWindow(window, length); error.fault != Fault::None) {
        return Fail(error);
    }
    film_ = FilmTrack{directory, selector};
    return SetWindow(window.start, window.end) || Fail(Fault::Unreadable);
}

bool ZFilekel::ReadHeader() {
    std::array<std::uint8_t, kContainerHeaderBytes> bytes{};
    if (!ReadAll(bytes)) return Fail(Fault::EndsEarly, FileOffset());
    header_ = header_on_disk_ = ParseContainerHeader(bytes).Value();
    const Error error = CheckHeaderFits(header_, static_cast<std::uint64_t>(Size()));
    if (error.fault != Fault::None) {
        return Fail(error.fault, static_cast<std::uint64_t>(WindowBase()) + error.offset);
    }
    if (!user_header_.Allocate(UserHeaderSize())) return Fail(Fault::TooLarge);
    return ReadAll(user_header_.Span()) || Fail(Fault::EndsEarly, FileOffset());
}

bool ZFilekel::ReadIndex(Mode mode) {
    const Error error = CheckIndexFits(header_, static_cast<std::uint64_t>(Size()));
    if (error.fault != Fault::None) {
        return Fail(error.fault, static_cast<std::uint64_t>(WindowBase()) + error.offset);
    }
    if (!index_.Size(RecordCount())) return Fail(Fault::TooLarge);
    if (!Seek(header_.IndexOffset) || !ReadU32Array(index_.Offsets()) ||
        !ReadU32Array(index_.SidePositions())) {
        return Fail(Fault::Unreadable, FileOffset());
    }
    if (!CheckRecordLength(LargestStoredLength())) return false;
    if (mode == Mode::ForRead) return true;
    return CheckIndexForEditing() && KeepOpening();
}

/// As far as the index can be believed: no record is longer than what lies between its offset and
/// its side block, or between it and the next record.
std::uint64_t ZFilekel::LargestStoredLength() const {
    const auto limit = static_cast<std::uint64_t>(kLargestContainer);
    std::uint64_t largest = 0;
    const auto offsets = index_.Offsets();
    const auto side_positions = index_.SidePositions();
    for (std::size_t record = 0; record < side_positions.size(); ++record) {
        const std::uint64_t start = std::uint64_t{offsets[record]} + kStoredLengthBytes;
        if (side_positions[record] >= start) {
            largest = std::max(largest, side_positions[record] - start);
        }
        const std::uint64_t behind = start + SideLength();
        if (offsets[record + 1] >= behind)
            largest = std::max(largest, offsets[record + 1] - behind);
    }
    return std::min(largest, limit);
}

bool ZFilekel::CheckRecordLength(std::uint64_t largest_stored) {
    if (RecordCount() == 0) return true;
    const auto in_file = static_cast<std::uint64_t>(Size());
    const std::uint64_t possible = codec::GreatestRecordLength(
        codec::CodingType(static_cast<int>(CompressionType())), std::min(largest_stored, in_file));
    if (RecordLength() <= possible) return true;
    return Fail(Fault::TooLarge, static_cast<std::uint64_t>(WindowBase()) + kRecordLengthOffset);
}

/// New records are written behind the end that the index names and old ones are overwritten where
/// it says: nothing of this may lie outside the records.
bool ZFilekel::CheckIndexForEditing() {
    const std::uint64_t first = header_.FirstRecordOffset();
    const std::uint64_t end = index_.End();
    bool sound = end >= first && end <= static_cast<std::uint64_t>(opening_length_);
    const auto offsets = index_.Offsets();
    const auto side_positions = index_.SidePositions();
    for (std::size_t record = 0; sound && record < side_positions.size(); ++record) {
        const std::uint64_t payload = std::uint64_t{offsets[record]} + kStoredLengthBytes;
        const std::uint64_t side = side_positions[record];
        sound = offsets[record] >= first && side >= payload && side + SideLength() <= end;
        if (sound && IsRaw(header_)) sound = side - payload == RecordLength();
    }
    return sound || Fail(Fault::Mismatch, header_.IndexOffset);
}

/// What an edit will overwrite and AbandonChanges gives back.
bool ZFilekel::KeepOpening() {
    if (!opening_index_.CopyFrom(index_) || !opening_user_header_.Allocate(UserHeaderSize())) {
        return Fail(Fault::TooLarge);
    }
    std::ranges::copy(user_header_.View(), opening_user_header_.Span().begin());
    return true;
}

bool ZFilekel::AllocateBuffers() {
    const bool has_type =
        SetCompressionType(static_cast<int>(CompressionType()), static_cast<int>(RecordLength()));
    // A type that was refused for want of a length was reported; its records, all empty, are then
    // not read. Otherwise it was memory that lacked.
    if (!has_type && RecordLength() > 0 && !IsRaw(header_)) return Fail(Fault::TooLarge);
    const bool allocated = record_buffer_.Allocate(RecordLength()) &&
                           side_buffer_.Allocate(SideLength()) &&
                           frame_buffer_.Allocate(FrameRoom(*this, header_));
    return allocated || Fail(Fault::TooLarge);
}

bool ZFilekel::FinishOpening(Mode mode) {
    if (!AllocateBuffers()) return false;
    current_record_ = 0;
    mode_ = mode;
    if (mode == Mode::Existing && IsDifferential()) return RecompressForEditing();
    return Seek(index_.RecordOffset(0)) || Fail(Fault::Unreadable);
}

bool ZFilekel::RecompressForEditing() {
    mode_ = Mode::ForRead;
    const int answer = MessageBoxA(nullptr, kEditingNeedsRecompression, kQuestionCaption,
                                   MB_YESNO | MB_ICONEXCLAMATION);
    if (answer != IDYES) return Fail(Fault::Stopped);
    return Recompress({.compression_type = kEditableType}, nullptr);
}

} // namespace kelvo
