#pragma once
// The first 1052 bytes of a record container: where each field lies, and the claims that can be
// checked against the size of the file before anything is allocated from them.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo {

inline constexpr std::size_t kContainerHeaderBytes = 1052;
/// Offsets are signed 32-bit values: no container, and no film, may be longer.
inline constexpr std::uint64_t kLargestContainer = 0x7FFFFFFF;

/// The fields in their order in the file; each is a little-endian 32-bit number.
struct ContainerHeader {
    static constexpr std::size_t kReservedBytes = 1016;

    std::uint32_t UserHeaderSize = 0;  ///< bytes of the track header that follows
    std::uint32_t RecordLength = 0;    ///< bytes of every decoded record
    std::uint32_t SideLength = 0;      ///< bytes of the side block behind every record
    std::uint32_t CreatorValue = 0;    ///< the creator's own; carried along, never read
    std::uint32_t RecordCount = 0;     ///< records that the index names
    std::uint32_t CompressionType = 0; ///< id of the catalogue
    std::uint32_t KeyInterval = 0;     ///< records from key record to key record
    std::uint32_t IndexOffset = 0;     ///< from the container's start; valid once closed cleanly
    std::uint32_t HeaderMark = 0;      ///< 1 in every file; never read
    std::array<std::uint8_t, kReservedBytes> reserved{}; ///< carried through as they are

    friend bool operator==(const ContainerHeader&, const ContainerHeader&) = default;

    /// Offset of record 0.
    std::uint64_t FirstRecordOffset() const {
        return kContainerHeaderBytes + std::uint64_t{UserHeaderSize};
    }
    /// Bytes of the record index: the offsets with the end behind them, then the side positions.
    std::uint64_t IndexBytes() const { return (2 * std::uint64_t{RecordCount} + 1) * 4; }
    /// Number of the key record that a differential decoder must start from to reach `record`;
    /// without an interval only record 0 is one.
    std::uint32_t KeyRecordOf(std::uint32_t record) const {
        return KeyInterval == 0 ? 0 : record - record % KeyInterval;
    }
};

/// @param bytes  kContainerHeaderBytes of them; fewer are EndsEarly
Result<ContainerHeader> ParseContainerHeader(ByteView bytes);

/// The exact bytes of a header; ParseContainerHeader is its mirror.
std::array<std::uint8_t, kContainerHeaderBytes> HeaderBytes(const ContainerHeader& header);

/// Whether the user header and, if the container holds any record, one record's frame fit into
/// `size` bytes; the offset of a fault is that of the field.
Error CheckHeaderFits(const ContainerHeader& header, std::uint64_t size);

/// Whether the index lies whole behind the user header and inside `size` bytes.
Error CheckIndexFits(const ContainerHeader& header, std::uint64_t size);

} // namespace kelvo
