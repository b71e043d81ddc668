#pragma once
// The description of a film's pictures: the user header of a video track. Here it is built, taken
// from bytes, and checked, so that nobody draws from numbers that contradict each other.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"
#include "platform/base/bitmaps.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvo {

/// Of every record of a video track: SyncNumber, a second value, CaptureTime, 96 bytes of nobody.
inline constexpr std::size_t kVideoSideLength = 108;
/// SyncNumber of an image that was never linked to sound.
inline constexpr std::uint32_t kNeverLinked = 99999999;
/// Bits of a capture time that are significant.
inline constexpr std::uint32_t kCaptureTimeMask = 0x0FFFFFFF;

/// BITMAPFILEHEADER and BITMAPINFOHEADER, which every header begins with.
inline constexpr std::size_t kBitmapHeadersSize = 54;
/// BitmapHeaderLength, VideoHeaderLength, nImgAlSec and VideoFlags, which every header ends with.
inline constexpr std::size_t kVideoTrailerSize = 12;
inline constexpr std::size_t kSmallestVideoHeader = kBitmapHeadersSize + kVideoTrailerSize;
/// Bit of VideoFlags: the images were scanned and carry capture times.
inline constexpr std::uint16_t kScannedFlag = 0x4000;
/// No picture is wider or higher: what the drawing calls can take.
inline constexpr std::int32_t kLargestVideoSide = 32767;

/// The fields of a video header that a reader uses. The trailer is found from the header's end.
struct VideoHeader {
    BITMAPINFOHEADER bitmap{};
    std::uint32_t BitmapHeaderLength = 0;
    std::uint32_t VideoHeaderLength = 0; ///< equals the length of the whole header
    std::int16_t nImgAlSec = 0;          ///< images per second, as stored
    std::uint16_t VideoFlags = 0;
};

/// The fields as they stand in the bytes, unchecked.
/// @param bytes  the whole user header
/// @return EndsEarly when there are fewer than 66 bytes.
Result<VideoHeader> ParseVideoHeader(ByteView bytes);

/// What a player relies on: a trailer that knows the header's length, 16 or 24 uncompressed bits a
/// pixel, a size above 0 and at most 32767 x 32767, room for the palette, and records that hold
/// exactly one picture.
/// @param header_size  length of the whole user header
/// @return the first field that breaks it, with its offset in the header.
Error CheckVideoHeader(const VideoHeader& header, std::size_t header_size,
                       std::uint32_t record_length);

/// BITMAPFILEHEADER and BITMAPINFOHEADER of pictures without palette: the 54 bytes that
/// VideoFilekel::WriteVideoHeader takes. Their record length is biSizeImage.
std::vector<std::uint8_t> BuildBitmapHeaders(std::int32_t width, std::int32_t height,
                                             std::uint16_t bits_per_pixel);

} // namespace kelvo
