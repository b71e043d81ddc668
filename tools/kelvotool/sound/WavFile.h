#pragma once
// Plain WAV files: their head, and what samples of a track become in them.
//
// A byte of a track stands for b - 127, one of a WAV file for b - 128. So a byte is written as
// b + 1, which is exact but for 255: a sound that holds it is written in 16 bits, each sample
// (b - 127) x 256 and 255 as 32767. Both ways come back exactly.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvo::tool {

inline constexpr std::size_t kWavHeadBytes = 44;
/// Samples behind the head of a file whose sizes have 32 bits.
inline constexpr std::uint64_t kMostWavBytes = 0xFFFFFFFF - kWavHeadBytes;

/// The head of a mono file. An odd number of bytes is followed by one of 0.
std::array<std::uint8_t, kWavHeadBytes>
WavHead(std::uint32_t sample_rate, std::uint32_t bytes_per_sample, std::uint32_t data_bytes);

/// Where the samples of a WAV file are, and of which form.
struct WavLayout {
    std::uint32_t sample_rate = 0;
    std::uint32_t channels = 0;
    std::uint32_t bits = 0; ///< 8, 16, 24 or 32; 32 with is_float: floating point
    bool is_float = false;
    std::uint64_t start = 0; ///< of the samples
    std::uint64_t bytes = 0; ///< of the samples, whole moments of all channels, that are there
    bool is_cut = false;     ///< the file ends before its samples do

    std::uint32_t BlockBytes() const { return channels * (bits / 8); }
    std::uint64_t Count() const { return bytes / BlockBytes(); }
};

/// Finds the samples.
/// @param head       the file's first bytes, as many as there are up to some thousand
/// @param file_size  of the whole file
/// @return BadValue for what is no WAV file or of a form that is not read
Result<WavLayout> ParseWav(ByteView head, std::uint64_t file_size);

/// One moment of sound: the mean of its channels, in 16 bits.
std::int32_t MonoSample(const WavLayout& layout, const std::uint8_t* block);

/// A byte of a track in 16 bits, and back to the nearest byte.
constexpr std::int16_t WideSample(std::uint8_t byte) {
    return byte == 255 ? std::int16_t{32767} : static_cast<std::int16_t>((byte - 127) * 256);
}
constexpr std::uint8_t ByteSample(std::int32_t wide) {
    const std::int32_t value = (wide + 32768 + 128) / 256 - 128;
    return static_cast<std::uint8_t>((value < -127 ? -127 : value > 128 ? 128 : value) + 127);
}

} // namespace kelvo::tool
