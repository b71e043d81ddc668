// Opening a container whose index cannot be trusted, for reading: with an index made in memory.

#include "container/ZFilekel.h"
#include "platform/base/files.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelvo {

bool ZFilekel::IndexIsBelievable() {
    if (mode_ == Mode::Closed || IndexHangsTogether(index_, header_)) return true;
    const auto start = static_cast<std::uint32_t>(WindowBase());
    const TrackWindow window{start, start + static_cast<std::uint32_t>(Size())};
    return IndexAgreesWithRecords(Handle(), window, header_, index_);
}

bool ZFilekel::OpenSalvaged(const CString& name, const std::optional<TrackWindow>& window) {
    if (mode_ != Mode::Closed || IsOpen()) return Fail(Fault::Busy);
    const Error before = std::exchange(last_error_, {}); // why it did not open as a whole one
    bool opened = OpenHandle(name, Mode::ForRead);
    if (opened && window) {
        const auto length = static_cast<std::uint64_t>(opening_length_);
        const bool fits = window->start <= window->end && window->start <= length;
        opened =
            fits && SetWindow(window->start, std::min<std::int64_t>(window->end, opening_length_));
        if (!opened) Fail(Fault::BadValue, window->start);
    }
    opened = opened && MapDamagedFile() && AllocateBuffers() &&
             (Seek(index_.RecordOffset(0)) || Fail(Fault::Unreadable, FileOffset()));
    if (!opened) {
        if (before.fault != Fault::None) last_error_ = before;
        return Shut(false);
    }
    current_record_ = 0;
    mode_ = Mode::ForRead;
    return true;
}

bool ZFilekel::MapDamagedFile() {
    std::array<std::uint8_t, kContainerHeaderBytes> bytes{};
    if (!ReadAll(bytes)) return Fail(Fault::EndsEarly, FileOffset());
    header_ = header_on_disk_ = ParseContainerHeader(bytes).Value();
    // What it counts may be lost; only what every record needs is believed.
    ContainerHeader bare = header_;
    bare.RecordCount = 0;
    const auto size = static_cast<std::uint64_t>(
        std::min<std::int64_t>(Size(), static_cast<std::int64_t>(kLargestContainer)));
    if (const Error error = CheckHeaderFits(bare, size); error.fault != Fault::None) {
        return Fail(error);
    }
    if (!user_header_.Allocate(UserHeaderSize())) return Fail(Fault::TooLarge);
    if (!ReadAll(user_header_.Span())) return Fail(Fault::EndsEarly, FileOffset());
    const auto start = static_cast<std::uint32_t>(WindowBase());
    RecordMap map;
    const Error error = MapRecords(Handle(), {start, start + static_cast<std::uint32_t>(size)},
                                   header_, MapDepth::Places, {}, map);
    if (error.fault != Fault::None) return Fail(error);
    const std::uint32_t found = map.index.Count() - map.Count(RecordState::Lost);
    if (found == 0) return Fail(Fault::Missing, start);
    if (!index_.CopyFrom(map.index)) return Fail(Fault::TooLarge);
    header_.RecordCount = index_.Count();
    map.index.Free();
    salvaged_ = std::move(map);
    return CheckRecordLength(LargestStoredLength());
}

bool ZFilekel::IsLost(std::uint32_t record) const {
    return salvaged_ && record < salvaged_->verdicts.size() &&
           salvaged_->verdicts[record].state == RecordState::Lost;
}

/// The record before it, and its side block, stay where they are.
bool ZFilekel::PassLostRecord() {
    Fail(Fault::Missing, FileOffset());
    record_is_damaged_ = true;
    ++current_record_;
    return Seek(index_.RecordOffset(current_record_)) || Fail(Fault::Unreadable, FileOffset());
}

/// Which record the decoding of another must begin with.
std::uint32_t ZFilekel::FirstToDecode(std::uint32_t record) const {
    std::uint32_t first = IsDifferential() ? header_.KeyRecordOf(record) : record;
    while (first > 0 && IsLost(first))
        --first; // what stands in its place is the record before it
    return IsDifferential() ? header_.KeyRecordOf(first) : first;
}

} // namespace kelvo
