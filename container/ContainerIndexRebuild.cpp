// Mode 5: the index of a whole container, made anew from its records and written through a
// temporary. What is damaged beyond that is the affair of IndexRebuild.

#include "container/RecordFrame.h"
#include "container/RewriteTarget.h"
#include "container/ZFilekel.h"
#include "framework/base/ProgressDisplay.h"
#include "platform/base/durable_files.h"

#include <algorithm>
#include <memory>

namespace kelvo {

namespace {

constexpr char kRebuildTitle[] = "Ricostruzione indici...";
constexpr char kCorruptFile[] = "FILE CORROTTO!";
constexpr std::uint32_t kDialogInterval = 10;

} // namespace

bool ZFilekel::RebuildIndexInPlace() {
    mode_ = Mode::IndexRebuild;
    if (!CheckRecordLength(static_cast<std::uint64_t>(Size())) || !AllocateBuffers()) return false;
    if (!index_.Start(static_cast<std::uint32_t>(header_.FirstRecordOffset()))) {
        return Fail(Fault::TooLarge);
    }
    const bool scanned = ScanRecords();
    // A person who stops gets the file back as it was; that is no failure.
    if (last_error_.fault == Fault::Stopped) return true;
    return scanned && WriteRebuiltFile();
}

bool ZFilekel::ScanRecords() {
    const std::unique_ptr<ProgressDisplay> dialog = ShowProgress(kRebuildTitle);
    const auto count = static_cast<std::int32_t>(RecordCount());
    for (current_record_ = 0; current_record_ < RecordCount(); ++current_record_) {
        if (!ScanRecord()) return false;
        const bool shown = current_record_ % kDialogInterval == 0;
        if (shown && !dialog->Update(static_cast<std::int32_t>(current_record_), count)) {
            return Fail(Fault::Stopped);
        }
    }
    return true;
}

bool ZFilekel::ScanRecord() {
    StoredRecord stored;
    if (!ReadStored(stored)) return false;
    const bool raw_of_other_length = IsRaw(header_) && stored.stored_length != RecordLength();
    if (!stored.side_available || raw_of_other_length) {
        Fail(Fault::BadValue, stored.file_offset);
        return ErrorBox(kCorruptFile); // and nothing tells where the next record would begin
    }
    const auto end = static_cast<std::uint32_t>(Position());
    if (!index_.Append(end - SideLength(), end)) return Fail(Fault::TooLarge, stored.file_offset);
    if (!IsRaw(header_)) DecodeStored(stored);
    return true;
}

bool ZFilekel::WriteRebuiltFile() {
    // A header that was never finished names a place inside the records, or none at all.
    if (header_.IndexOffset < index_.End() ||
        header_.IndexOffset > static_cast<std::uint64_t>(Size())) {
        header_.IndexOffset = index_.End();
    }
    RewriteTarget target;
    Error error = target.Begin(system_name_, RewriteTarget::Kind::Track);
    if (error.fault == Fault::None && !platform::NameMeans(system_name_, Handle())) {
        error = {Fault::Busy, 0}; // another program has replaced the file
    }
    if (error.fault == Fault::None) error = target.AppendBytes(HeaderBytes(header_));
    if (error.fault == Fault::None) {
        error = target.CopyWindow(Handle(), {kContainerHeaderBytes, header_.IndexOffset});
    }
    if (error.fault == Fault::None) error = target.AppendIndex(index_);
    if (error.fault == Fault::None) error = target.Finish();
    if (error.fault != Fault::None) return FailRewrite(target, error);
    last_error_ = {};
    PutInPlace(target, system_name_);
    return true;
}

} // namespace kelvo
