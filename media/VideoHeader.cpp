#include "media/VideoHeader.h"

#include "framework/base/ByteReader.h"
#include "media/Pixel555.h"

#include <cstring>

namespace kelvo {

namespace {

// Where the fields stand in the header; the last four count from its end.
constexpr std::uint64_t kInfoOffset = 14;
constexpr std::uint64_t kWidthOffset = 18;
constexpr std::uint64_t kHeightOffset = 22;
constexpr std::uint64_t kBitCountOffset = 28;
constexpr std::uint64_t kCompressionOffset = 30;
constexpr std::uint64_t kColoursOffset = 46;
constexpr std::uint64_t kVideoHeaderLengthFromEnd = 8;

bool IsSide(std::int32_t side) {
    return side > 0 && side <= kLargestVideoSide;
}

} // namespace

Result<VideoHeader> ParseVideoHeader(ByteView bytes) {
    if (bytes.size() < kSmallestVideoHeader) return Error{Fault::EndsEarly, bytes.size()};
    VideoHeader header;
    std::memcpy(&header.bitmap, bytes.data() + kInfoOffset, sizeof(header.bitmap));
    ByteReader trailer{bytes.last(kVideoTrailerSize)};
    header.BitmapHeaderLength = trailer.ReadU32();
    header.VideoHeaderLength = trailer.ReadU32();
    header.nImgAlSec = static_cast<std::int16_t>(trailer.ReadU16());
    header.VideoFlags = trailer.ReadU16();
    return header;
}

Error CheckVideoHeader(const VideoHeader& header, std::size_t header_size,
                       std::uint32_t record_length) {
    const BITMAPINFOHEADER& bitmap = header.bitmap;
    if (header_size < kSmallestVideoHeader) return {Fault::EndsEarly, header_size};
    if (header.VideoHeaderLength != header_size) {
        return {Fault::Mismatch, header_size - kVideoHeaderLengthFromEnd};
    }
    if (bitmap.biSize != sizeof(BITMAPINFOHEADER)) return {Fault::BadValue, kInfoOffset};
    if (!IsSide(bitmap.biWidth)) return {Fault::BadValue, kWidthOffset};
    if (!IsSide(bitmap.biHeight)) return {Fault::BadValue, kHeightOffset};
    if (bitmap.biBitCount != 16 && bitmap.biBitCount != 24) {
        return {Fault::BadValue, kBitCountOffset};
    }
    if (bitmap.biCompression != BI_RGB) return {Fault::BadValue, kCompressionOffset};
    if (bitmap.biClrUsed > (header_size - kSmallestVideoHeader) / sizeof(RGBQUAD)) {
        return {Fault::TooLarge, kColoursOffset};
    }
    const std::uint64_t picture_bytes =
        pixel::RowStride(static_cast<std::uint32_t>(bitmap.biWidth), bitmap.biBitCount) *
        static_cast<std::uint32_t>(bitmap.biHeight);
    if (picture_bytes != record_length) return {Fault::Mismatch, kWidthOffset};
    return {};
}

std::vector<std::uint8_t> BuildBitmapHeaders(std::int32_t width, std::int32_t height,
                                             std::uint16_t bits_per_pixel) {
    const std::uint64_t picture_bytes =
        pixel::RowStride(static_cast<std::uint32_t>(width), bits_per_pixel) *
        static_cast<std::uint32_t>(height);
    BITMAPFILEHEADER file{};
    file.bfType = 0x4D42; // "BM"
    file.bfSize = static_cast<DWORD>(kBitmapHeadersSize + picture_bytes);
    file.bfOffBits = static_cast<DWORD>(kBitmapHeadersSize);
    BITMAPINFOHEADER info{};
    info.biSize = sizeof(BITMAPINFOHEADER);
    info.biWidth = width;
    info.biHeight = height;
    info.biPlanes = 1;
    info.biBitCount = bits_per_pixel;
    info.biCompression = BI_RGB;
    info.biSizeImage = static_cast<DWORD>(picture_bytes);
    std::vector<std::uint8_t> bytes(kBitmapHeadersSize);
    std::memcpy(bytes.data(), &file, sizeof(file));
    std::memcpy(bytes.data() + kInfoOffset, &info, sizeof(info));
    return bytes;
}

} // namespace kelvo
