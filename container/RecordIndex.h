#pragma once
// The index of a container in memory: where every record and its side block lie, eight bytes a
// record. Growth costs no quadratic copying, however many records there are.

#include "framework/base/CArray.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace kelvo {

class RecordIndex {
public:
    RecordIndex() { Free(); }

    /// No record; the records would begin, and so end, at `first_record_offset`.
    [[nodiscard]] bool Start(std::uint32_t first_record_offset);
    /// Room for exactly `count` records, to be filled in through the spans.
    /// @return false when there is no memory
    [[nodiscard]] bool Size(std::uint32_t count);
    [[nodiscard]] bool CopyFrom(const RecordIndex& other);
    /// No records, no end, no memory.
    void Free();

    std::uint32_t Count() const { return static_cast<std::uint32_t>(side_positions_.Count()); }
    /// @param record  below Count(), or Count() for the end of the records
    std::uint32_t RecordOffset(std::uint32_t record) const {
        return offsets_[static_cast<std::int32_t>(record)];
    }
    std::uint32_t SidePosition(std::uint32_t record) const {
        return side_positions_[static_cast<std::int32_t>(record)];
    }
    /// Where the last record ends and the next one begins; 0 when nothing was started.
    std::uint32_t End() const;

    /// A record from the present end on. @return false when there is no memory; nothing changed
    [[nodiscard]] bool Append(std::uint32_t side_position, std::uint32_t end);
    /// Record `record` now lies behind the last one.
    void MoveToEnd(std::uint32_t record, std::uint32_t side_position, std::uint32_t end);
    /// The last record becomes number `record`; the ones from there on move up.
    void InsertLastAt(std::uint32_t record);
    /// Takes out the records [first, end); the end of the records stays.
    void Delete(std::uint32_t first, std::uint32_t end);

    /// Count() + 1 values, the last being End().
    std::span<std::uint32_t> Offsets() { return offsets_.Items(); }
    std::span<const std::uint32_t> Offsets() const { return offsets_.Items(); }
    /// Count() values.
    std::span<std::uint32_t> SidePositions() { return side_positions_.Items(); }
    std::span<const std::uint32_t> SidePositions() const { return side_positions_.Items(); }

    friend bool operator==(const RecordIndex& left, const RecordIndex& right) {
        return std::ranges::equal(left.Offsets(), right.Offsets()) &&
               std::ranges::equal(left.SidePositions(), right.SidePositions());
    }

private:
    CArray<unsigned int> offsets_;
    CArray<unsigned int> side_positions_;
};

} // namespace kelvo
