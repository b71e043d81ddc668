#pragma once
// What the Vorbis form of a sound track begins with: the signature, the description of its frames
// and, behind them, the track's own header. Here it is taken from bytes, written and checked; the
// stream behind it is VorbisDecoder's affair.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"
#include "media/AudioHeader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelvo {

/// What every Vorbis track begins with; no terminator.
inline constexpr std::string_view kVorbisSignature = "VrbZuva40213380500000000000000";
static_assert(kVorbisSignature.size() == 30);

/// No audio frame is longer: whatever is pending, a whole one fits into the buffer that PCM
/// gathers in.
inline constexpr std::size_t kLargestVorbisFrame = 516096;

/// The six fields behind the signature, in their order in the file.
struct VorbisDescription {
    static constexpr std::size_t kBytes = 24;

    std::uint32_t frame_count = 0; ///< audio frames in the track
    std::uint32_t SampleRate = 22050;
    std::uint32_t channels = 1;       ///< as given to the encoder
    std::uint32_t BytesPerSample = 1; ///< that the decoder produces: 1 or 2
    std::uint32_t nFramesAlSec = 10;
    std::uint32_t FrameBytes = 2205;
    friend bool operator==(const VorbisDescription&, const VorbisDescription&) = default;
};

/// Where the track's own header stands in the track.
inline constexpr std::uint64_t kVorbisHeaderOffset =
    kVorbisSignature.size() + VorbisDescription::kBytes;

/// @param head  the first bytes of a track; any number of them
bool StartsWithVorbisSignature(ByteView head);

/// The fields as they stand in the bytes behind the signature, unchecked.
/// @return EndsEarly when there are fewer than 24 bytes.
Result<VorbisDescription> ParseVorbisDescription(ByteView bytes);
std::array<std::uint8_t, VorbisDescription::kBytes>
VorbisDescriptionBytes(const VorbisDescription& description);

/// What a reader relies on: a sample width of 1 or 2, a rate, a channel and a number of frames a
/// second, and frames that hold that part of a second, of one channel or of all.
/// @return the first field that breaks it, with its offset in the track.
Error CheckVorbisDescription(const VorbisDescription& description);
/// The same of the track's own header, which must describe the same frames: whoever plays asks it
/// how long a frame is, and takes the frame from a buffer of the description's length.
/// @return the first field that breaks it, with its offset in the header.
Error CheckVorbisSoundHeader(const AudioHeader& header, const VorbisDescription& description);

} // namespace kelvo
