#include "container/ZFilekel.h"

#include "container/RecordFrame.h"
#include "platform/base/durable_files.h"
#include "platform/base/file_names.h"
#include "platform/base/files.h"

#include <algorithm>
#include <cassert>
#include <optional>

namespace kelvo {

ZFilekel::~ZFilekel() {
    Close();
}

bool ZFilekel::Fail(Fault fault, std::uint64_t offset) {
    // The first fault of an operation is the cause of the others.
    if (last_error_.fault == Fault::None) last_error_ = {fault, offset};
    return false;
}

void ZFilekel::Reset() {
    mode_ = Mode::Closed;
    system_name_.clear();
    header_ = header_on_disk_ = {};
    film_.reset();
    index_.Free();
    opening_index_.Free();
    opening_user_header_.Free();
    opening_length_ = 0;
    record_buffer_.Free();
    side_buffer_.Free();
    user_header_.Free();
    frame_buffer_.Free();
    current_record_ = 0;
    record_is_damaged_ = false;
    record_is_lost_ = false;
    salvaged_.reset();
    modified_ = false;
    undo_.Abandon(); // removed by now, unless the next opening shall find it
}

bool ZFilekel::Shut(bool result) {
    CloseFile(); // whatever had to be written is synced by now: nothing is left to go wrong
    Reset();
    return result;
}

bool ZFilekel::Create(const CString& name, std::uint32_t user_header_size,
                      std::uint32_t record_length, std::uint32_t side_length, std::uint32_t type,
                      std::uint32_t key_interval, std::uint32_t creator_value) {
    if (mode_ != Mode::Closed || IsOpen()) return Fail(Fault::Busy);
    last_error_ = {};
    header_ = {.UserHeaderSize = user_header_size,
               .RecordLength = record_length,
               .SideLength = side_length,
               .CreatorValue = creator_value,
               .CompressionType = type,
               .KeyInterval = key_interval,
               .HeaderMark = 1};
    const std::uint64_t first = header_.FirstRecordOffset();
    if (first + header_.IndexBytes() > kLargestContainer || record_length > kLargestContainer ||
        side_length > kLargestContainer) {
        Reset();
        return Fail(Fault::TooLarge);
    }
    const std::optional<std::string> system_name =
        platform::NewFileName(ResolvePath(nullptr, name, nullptr).View());
    if (!system_name || !CreateFresh(name)) {
        Reset();
        return Fail(Fault::Unwritable);
    }
    system_name_ = platform::WithoutLinks(*system_name);
    mode_ = Mode::New;
    const bool made = index_.Start(static_cast<std::uint32_t>(first)) &&
                      user_header_.Allocate(user_header_size) && AllocateBuffers();
    if (!made) Fail(Fault::TooLarge);
    if (made && WriteAll(HeaderBytes(header_)) && WriteAll(user_header_.View())) return true;
    Fail(Fault::Unwritable, FileOffset());
    AbandonChanges(); // a file without a whole header is of no use to anybody
    return false;
}

bool ZFilekel::WriteUserHeader(ByteView user_header) {
    if (mode_ == Mode::Closed) return false;
    last_error_ = {};
    if (user_header.size() != UserHeaderSize()) return Fail(Fault::BadValue);
    if (!IsWritable()) return Fail(Fault::Unwritable, kContainerHeaderBytes);
    if (!SaveUndo()) return false;
    if (!Seek(kContainerHeaderBytes) || !WriteAll(user_header)) {
        return Fail(Fault::Unwritable, kContainerHeaderBytes);
    }
    if (user_header.data() != user_header_.View().data()) {
        std::ranges::copy(user_header, user_header_.Span().begin());
    }
    return true;
}

bool ZFilekel::CanAppend(ByteView payload, ByteView side) {
    last_error_ = {};
    if (mode_ != Mode::HeaderOnly && mode_ != Mode::Existing && mode_ != Mode::New) {
        return Fail(Fault::Unwritable);
    }
    if (payload.size() != RecordLength() || side.size() != SideLength()) {
        return Fail(Fault::BadValue);
    }
    return true;
}

/// Saves, once, what the coming writes will overwrite; a new file has nothing to lose.
bool ZFilekel::SaveUndo() {
    if (mode_ == Mode::New || undo_.IsSaved()) return true;
    const Error error = undo_.Save(system_name_, header_on_disk_, opening_user_header_.View(),
                                   opening_index_, static_cast<std::uint64_t>(opening_length_));
    return error.fault == Fault::None || Fail(error);
}

/// Writes a record at the end of the records, unless the file would become too long for it or for
/// the index behind it.
bool ZFilekel::WriteFrame(ByteView frame) {
    if (frame.empty()) return Fail(Fault::BadValue);
    ContainerHeader grown = header_;
    ++grown.RecordCount;
    const std::uint64_t end = index_.End() + std::uint64_t{frame.size()};
    if (end + grown.IndexBytes() > kLargestContainer) return Fail(Fault::TooLarge, index_.End());
    if (!SaveUndo()) return false;
    if (Seek(index_.End()) && WriteAll(frame)) return true;
    return Fail(Fault::Unwritable, index_.End());
}

bool ZFilekel::AppendRecord(ByteView payload, ByteView side) {
    if (!CanAppend(payload, side)) return false;
    const ByteView frame =
        EncodeFrame(*this, header_, RecordCount(), payload, side, frame_buffer_.Span());
    if (!WriteFrame(frame)) return false;
    const auto end = static_cast<std::uint32_t>(index_.End() + frame.size());
    if (!index_.Append(end - SideLength(), end)) return Fail(Fault::TooLarge, index_.End());
    if (mode_ != Mode::New) ++current_record_;
    ++header_.RecordCount;
    return true;
}

/// The index at its place and the header in front, whatever was there.
bool ZFilekel::WriteIndexAndHeader() {
    const bool written = Seek(header_.IndexOffset) && WriteU32Array(index_.Offsets()) &&
                         WriteU32Array(index_.SidePositions()) && platform::SyncFile(Handle());
    if (!written) return Fail(Fault::Unwritable, header_.IndexOffset);
    if (undo_.IsSaved()) {
        if (const Error error = undo_.Announce(header_); error.fault != Fault::None) {
            return Fail(error);
        }
    }
    if (Seek(0) && WriteAll(HeaderBytes(header_)) && platform::SyncFile(Handle())) return true;
    return Fail(Fault::Unwritable);
}

/// The opening header, user header and index back in their places.
bool ZFilekel::RestoreOpening() {
    return Seek(header_on_disk_.IndexOffset) && WriteU32Array(opening_index_.Offsets()) &&
           WriteU32Array(opening_index_.SidePositions()) && Seek(0) &&
           WriteAll(HeaderBytes(header_on_disk_)) && WriteAll(opening_user_header_.View()) &&
           platform::SyncFile(Handle());
}

bool ZFilekel::ReplaceIndexAndHeader() {
    if (header_ == header_on_disk_ && !undo_.IsSaved()) { // at most records replaced in place
        return platform::SyncFile(Handle()) || Fail(Fault::Unwritable);
    }
    if (SaveUndo() && WriteIndexAndHeader()) {
        undo_.Remove();
        return true;
    }
    const bool restored =
        RestoreOpening() &&
        platform::SetFileSize(Handle(), static_cast<std::uint64_t>(opening_length_));
    if (restored) undo_.Remove(); // else the next opening finds it
    return false;
}

bool ZFilekel::CloseClean() {
    last_error_ = {};
    header_.IndexOffset = index_.End();
    header_.HeaderMark = 1;
    return Shut(mode_ == Mode::New ? WriteIndexAndHeader() : ReplaceIndexAndHeader());
}

bool ZFilekel::Close() {
    if (mode_ == Mode::Closed) return false;
    if (mode_ == Mode::ForRead) return Shut(true);
    return modified_ ? CloseModified() : CloseClean();
}

} // namespace kelvo
