#include "container/ContainerHeader.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"

#include <algorithm>

namespace kelvo {

namespace {

/// The numbers of the header in their order in the file.
constexpr std::uint32_t ContainerHeader::* kFields[] = {
    &ContainerHeader::UserHeaderSize, &ContainerHeader::RecordLength,
    &ContainerHeader::SideLength,     &ContainerHeader::CreatorValue,
    &ContainerHeader::RecordCount,    &ContainerHeader::CompressionType,
    &ContainerHeader::KeyInterval,    &ContainerHeader::IndexOffset,
    &ContainerHeader::HeaderMark,
};
static_assert(std::size(kFields) * 4 + ContainerHeader::kReservedBytes == kContainerHeaderBytes);

constexpr std::uint64_t kUserHeaderSizeOffset = 0;
constexpr std::uint64_t kRecordLengthOffset = 4;
constexpr std::uint64_t kSideLengthOffset = 8;
constexpr std::uint64_t kIndexOffsetOffset = 28;

} // namespace

Result<ContainerHeader> ParseContainerHeader(ByteView bytes) {
    ByteReader reader{bytes};
    ContainerHeader header;
    for (const auto field : kFields)
        header.*field = reader.ReadU32();
    const ByteView reserved = reader.ReadBytes(ContainerHeader::kReservedBytes);
    if (!reader.Ok()) return Error{Fault::EndsEarly, bytes.size()};
    std::ranges::copy(reserved, header.reserved.begin());
    return header;
}

std::array<std::uint8_t, kContainerHeaderBytes> HeaderBytes(const ContainerHeader& header) {
    std::array<std::uint8_t, kContainerHeaderBytes> bytes{};
    ByteWriter writer{bytes};
    for (const auto field : kFields)
        writer.WriteU32(header.*field);
    writer.WriteBytes(header.reserved);
    return bytes;
}

Error CheckHeaderFits(const ContainerHeader& header, std::uint64_t size) {
    if (header.FirstRecordOffset() > size) return {Fault::EndsEarly, kUserHeaderSizeOffset};
    // Lengths are handed around as signed 32-bit values.
    if (header.RecordLength > kLargestContainer) return {Fault::TooLarge, kRecordLengthOffset};
    if (header.SideLength > kLargestContainer) return {Fault::TooLarge, kSideLengthOffset};
    const std::uint64_t room = size - header.FirstRecordOffset();
    if (header.RecordCount > 0 && 4 + std::uint64_t{header.SideLength} > room) {
        return {Fault::TooLarge, kSideLengthOffset};
    }
    return {};
}

Error CheckIndexFits(const ContainerHeader& header, std::uint64_t size) {
    if (header.IndexOffset < header.FirstRecordOffset()) {
        return {Fault::BadValue, kIndexOffsetOffset};
    }
    if (header.IndexOffset > size || header.IndexBytes() > size - header.IndexOffset) {
        return {Fault::EndsEarly, kIndexOffsetOffset};
    }
    return {};
}

} // namespace kelvo
