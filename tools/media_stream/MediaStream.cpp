#include "tools/media_stream/MediaStream.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"

namespace kelvo::media_stream {

std::array<std::uint8_t, BlockHead::kBytes> BytesOf(const BlockHead& head) {
    std::array<std::uint8_t, BlockHead::kBytes> bytes{};
    ByteWriter writer{bytes};
    writer.WriteU32(head.tag);
    writer.WriteU32(head.length);
    return bytes;
}

std::array<std::uint8_t, PictureFormat::kBytes> BytesOf(const PictureFormat& format) {
    std::array<std::uint8_t, PictureFormat::kBytes> bytes{};
    ByteWriter writer{bytes};
    for (const std::uint32_t field : {format.width, format.height, format.ticks_numerator,
                                      format.ticks_denominator, format.significant_bits})
        writer.WriteU32(field);
    writer.WriteU64(format.count);
    return bytes;
}

std::array<std::uint8_t, SoundFormat::kBytes> BytesOf(const SoundFormat& format) {
    std::array<std::uint8_t, SoundFormat::kBytes> bytes{};
    ByteWriter writer{bytes};
    for (const std::uint32_t field : {format.sample_rate, format.channels, format.significant_bits})
        writer.WriteU32(field);
    writer.WriteU64(format.count);
    return bytes;
}

std::array<std::uint8_t, ImageHead::kBytes> BytesOf(const ImageHead& head) {
    std::array<std::uint8_t, ImageHead::kBytes> bytes{};
    ByteWriter writer{bytes};
    writer.WriteU64(head.start);
    writer.WriteU32(head.duration);
    return bytes;
}

Result<BlockHead> ParseBlockHead(ByteView bytes) {
    ByteReader reader{bytes};
    BlockHead head;
    head.tag = reader.ReadU32();
    head.length = reader.ReadU32();
    if (!reader.Ok()) return Error{Fault::EndsEarly, reader.Offset()};
    if (head.length > kLargestBlock) return Error{Fault::TooLarge, 4};
    return head;
}

Result<PictureFormat> ParsePicture(ByteView bytes) {
    ByteReader reader{bytes};
    PictureFormat format;
    format.width = reader.ReadU32();
    format.height = reader.ReadU32();
    format.ticks_numerator = reader.ReadU32();
    format.ticks_denominator = reader.ReadU32();
    format.significant_bits = reader.ReadU32();
    format.count = reader.ReadU64();
    if (!reader.Ok()) return Error{Fault::EndsEarly, reader.Offset()};
    const bool has_sides = format.width > 0 && format.width <= kLargestSide && format.height > 0 &&
                           format.height <= kLargestSide;
    if (!has_sides || format.ImageBytes() > kLargestBlock - ImageHead::kBytes) {
        return Error{Fault::BadValue, 0};
    }
    if (format.ticks_numerator == 0 || format.ticks_denominator == 0) {
        return Error{Fault::BadValue, 8};
    }
    return format;
}

Result<SoundFormat> ParseSound(ByteView bytes) {
    ByteReader reader{bytes};
    SoundFormat format;
    format.sample_rate = reader.ReadU32();
    format.channels = reader.ReadU32();
    format.significant_bits = reader.ReadU32();
    format.count = reader.ReadU64();
    if (!reader.Ok()) return Error{Fault::EndsEarly, reader.Offset()};
    if (format.sample_rate == 0) return Error{Fault::BadValue, 0};
    if (format.channels == 0 || format.channels > kMostChannels) return Error{Fault::BadValue, 4};
    return format;
}

Result<ImageHead> ParseImageHead(ByteView bytes) {
    ByteReader reader{bytes};
    ImageHead head;
    head.start = reader.ReadU64();
    head.duration = reader.ReadU32();
    if (!reader.Ok()) return Error{Fault::EndsEarly, reader.Offset()};
    return head;
}

} // namespace kelvo::media_stream
