// Replacing, inserting and deleting records of a container that is open for editing, and giving the
// edits up.

#include "container/RecordFrame.h"
#include "container/ZFilekel.h"
#include "platform/base/file_calls.h"
#include "platform/base/message_boxes.h"

#include <algorithm>
#include <tuple>

namespace kelvo {

namespace {

constexpr char kOnlyExisting[] =
    "L'operazione richiesta può essere eseguita solo su un file aperto in OpenExisting!";

constexpr char kQuestionCaption[] = "ZFilekel";
constexpr char kRecompressBefore[] = "Occorre ricomprimere il file ";
constexpr char kRecompressAfter[] =
    ".\r\n\r\nSe si sceglie di non effettuare l'operazione, tutte le modifiche apportate sui "
    "records andranno perse.\r\n\r\nRICOMPRIMERE IL FILE?";

} // namespace

bool ZFilekel::CheckEditing(int record) {
    last_error_ = {};
    if (record < 0 || static_cast<std::uint32_t>(record) >= RecordCount()) return false;
    return mode_ == Mode::Existing || ErrorBox(kOnlyExisting);
}

bool ZFilekel::ReplaceRecord(int record, ByteView payload, ByteView side) {
    if (!CheckEditing(record) || !CanAppend(payload, side)) return false;
    const auto number = static_cast<std::uint32_t>(record);
    const ByteView frame = EncodeReplacement(*this, header_, payload, side, frame_buffer_.Span());
    if (IsRaw(header_)) { // fixed sizes: the new bytes lie exactly on the old ones
        const ByteView content = frame.subspan(kStoredLengthBytes);
        const std::uint32_t offset = index_.RecordOffset(number) + kStoredLengthBytes;
        if (!Seek(offset) || !WriteAll(content)) return Fail(Fault::Unwritable, offset);
    } else {
        if (!WriteFrame(frame)) return false;
        const auto end = static_cast<std::uint32_t>(index_.End() + frame.size());
        index_.MoveToEnd(number, end - SideLength(), end);
        modified_ = true;
    }
    current_record_ = number + 1;
    return true;
}

bool ZFilekel::InsertRecord(int record, ByteView payload, ByteView side) {
    if (!CheckEditing(record) || !AppendRecord(payload, side)) return false;
    const auto number = static_cast<std::uint32_t>(record);
    modified_ = true;
    index_.InsertLastAt(number);
    return SeekToRecord(number + 1);
}

bool ZFilekel::DeleteRecords(int first, int end) {
    last_error_ = {};
    if (RecordCount() < 2) return false;
    if (mode_ != Mode::Existing) return ErrorBox(kOnlyExisting);
    if (first < 0 || first >= end || static_cast<std::uint32_t>(end) > RecordCount()) return false;
    auto from = static_cast<std::uint32_t>(first);
    const auto to = static_cast<std::uint32_t>(end);
    if (from == 0 && to == RecordCount()) from = 1; // a container keeps at least one record
    modified_ = true;
    index_.Delete(from, to);
    header_.RecordCount -= to - from;
    current_record_ = std::min(current_record_, RecordCount());
    return true;
}

/// The opening state into the file; where that fails, the next opening does it.
void ZFilekel::GiveChangesUp() {
    if (undo_.IsSaved() && RestoreOpening()) undo_.Remove();
}

void ZFilekel::AbandonChanges() {
    if (mode_ == Mode::Closed) return;
    if (mode_ == Mode::New) {
        CloseFile();
        platform::CurrentFileCalls().unlink(system_name_.c_str());
    } else {
        GiveChangesUp();
    }
    Shut(true);
}

bool ZFilekel::CloseModified() {
    const CString text = CString(kRecompressBefore) + FileName() + kRecompressAfter;
    const int answer =
        MessageBoxA(nullptr, text.Text(), kQuestionCaption, MB_YESNO | MB_ICONEXCLAMATION);
    if (answer == IDYES) {
        // What keeps the rewrite from its end has been said in a box.
        std::ignore = RecompressOnClose(true);
        return true;
    }
    AbandonChanges();
    return false;
}

} // namespace kelvo
