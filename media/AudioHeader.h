#pragma once
// The description of a sound track: the user header of its container, or the block behind the
// signature of its Vorbis form. Here it is built, taken from bytes, and checked.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"
#include "platform/base/types.h"
#include "platform/base/wave_format.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo {

inline constexpr std::size_t kAudioHeaderSize = 34;
/// Of every record of a sound track; the first 4 bytes are its capture time.
inline constexpr std::size_t kAudioSideLength = 32;
/// Where a sound track has no distance between key records: more records than any track holds.
inline constexpr std::uint32_t kNoKeyInterval = 999999;

/// Fields and order as in the file; every number little-endian.
struct AudioHeader {
    std::uint32_t SampleRate = 0;     ///< samples per second
    std::uint32_t BytesPerSample = 0; ///< 1 (unsigned, centre 127) or 2 (signed, low byte first)
    std::uint32_t nFramesAlSec = 0;   ///< audio frames per second: 1, 5 or 10
    std::uint32_t FrameBytes = 0;     ///< of one audio frame
    WAVEFORMATEX Format{};            ///< what the wave device is opened with
};
static_assert(sizeof(AudioHeader) >= kAudioHeaderSize);

/// Derives FrameBytes and the wave format from the three values that describe mono sound.
/// With 0 frames per second FrameBytes is 0.
AudioHeader BuildWaveFormat(std::uint32_t sample_rate, std::uint32_t bytes_per_sample,
                            std::uint32_t frames_per_second);

/// The fields as they stand in the bytes, unchecked.
/// @return EndsEarly when there are fewer than 34 bytes.
Result<AudioHeader> ParseAudioHeader(ByteView bytes);
std::array<std::uint8_t, kAudioHeaderSize> AudioHeaderBytes(const AudioHeader& header);

/// What a player relies on: a sample width of 1 or 2, a rate and a number of frames that are not 0,
/// and frames whose length follows from them.
/// @param channels  of the frames; 1 but for a Vorbis stream that says otherwise
/// @return the first field that breaks it, with its offset in the header.
Error CheckAudioHeader(const AudioHeader& header, std::uint32_t channels = 1);

/// Replaces a wave format that contradicts the four leading fields by the one that follows from
/// them, so that the device is never opened with numbers that nobody checked.
void RepairWaveFormat(AudioHeader& header);

/// The byte that silence consists of in either sample width.
inline std::uint8_t SilenceByte(const AudioHeader& header) {
    return header.BytesPerSample == 1 ? std::uint8_t{127} : std::uint8_t{0};
}

/// True when both describe the same form of sound (the compression type is compared elsewhere).
bool SameForm(const AudioHeader& a, const AudioHeader& b);

} // namespace kelvo
