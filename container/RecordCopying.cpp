#include "container/RecordCopying.h"

#include "container/ZFilekel.h"

namespace kelvo {

namespace {

bool ReadInOrder(ZFilekel& source, std::uint32_t record) {
    // By number, a differential container would decode every record once for each one behind it.
    if (source.OpenMode() == ZFilekel::Mode::ForRead && record > 0) return source.ReadNextRecord();
    return source.ReadRecord(static_cast<int>(record));
}

Error CopyStored(ZFilekel& source, RewriteTarget& target, std::uint32_t record) {
    std::uint32_t stored_length = 0;
    const std::uint8_t* stored = source.ReadRawRecord(static_cast<int>(record), stored_length);
    if (stored == nullptr || source.LastError().fault != Fault::None) return source.LastError();
    return target.AppendStored({stored, stored_length}, source.SideBuffer());
}

Error CopyRecord(ZFilekel& source, RewriteTarget& target, std::uint32_t record, std::uint32_t type,
                 DamagedRecords damaged) {
    if (!ReadInOrder(source, record)) {
        const Error error = source.LastError();
        return error.fault != Fault::None ? error : Error{Fault::Unreadable, 0};
    }
    const Error error = source.LastError();
    if (damaged == DamagedRecords::KeepWhatReads || !source.RecordIsDamaged()) {
        return target.AppendRecord(source.RecordBuffer(), source.SideBuffer());
    }
    const bool stays = type == source.CompressionType() && !source.IsDifferential();
    return stays ? CopyStored(source, target, record) : error;
}

} // namespace

Error CopyRecords(ZFilekel& source, RewriteTarget& target, std::uint32_t type,
                  DamagedRecords damaged, const CopyStep& step) {
    for (std::uint32_t record = 0; record < source.RecordCount(); ++record) {
        const Error error = CopyRecord(source, target, record, type, damaged);
        if (error.fault != Fault::None) return error;
        if (step && !step(record)) return {Fault::Stopped, 0};
    }
    return {};
}

} // namespace kelvo
