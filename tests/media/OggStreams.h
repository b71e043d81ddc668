#pragma once
// Ogg streams made page by page for the tests: sound ones of any channel count, and broken ones.

#include "tests/media/MediaFiles.h"

#include <cstdint>
#include <vector>

namespace kelvo::test {

/// A Vorbis stream of float sound, as the encoder makes it.
/// @param channels  of equal length
Bytes EncodedStream(const std::vector<std::vector<float>>& channels, std::uint32_t sample_rate);

/// One page that begins stream 1, with the given bytes as its only packet.
Bytes FirstPage(const Bytes& packet);
/// One page that begins stream 1 and holds nothing but the beginning of a packet.
Bytes FirstPageWithoutEnd();
/// The page once more, with one byte of its header set and the checksum made anew.
Bytes WithHeaderByte(Bytes page, std::size_t offset, std::uint8_t value);
/// Lengths of the pages of a stream, in order.
std::vector<std::size_t> PageLengths(ByteView stream);
/// The third header packet of a Vorbis stream.
Bytes SetupPacket(const Bytes& stream);

/// The fixed part of a Vorbis track, and the stream behind it.
struct VorbisTrack {
    std::uint32_t frame_count = 10;
    std::uint32_t sample_rate = 22050;
    std::uint32_t channels = 1;
    std::uint32_t bytes_per_sample = 1;
    std::uint32_t frames_per_second = 10;
    std::uint32_t frame_bytes = 2205;
    Bytes stream;

    Bytes Build() const;
};

/// A sine as loud as half of the range.
std::vector<float> Tone(double seconds, std::uint32_t sample_rate, double hertz,
                        double loudness = 0.5);
/// A tone whose pitch climbs, so that no two frames are alike.
std::vector<float> Sweep(double seconds, std::uint32_t sample_rate);
/// The same as a track of 22050 samples a second of one byte, ten frames a second.
VorbisTrack SweepTrack(double seconds);

} // namespace kelvo::test
