#include "tools/kelvotool/sound/WavFile.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string_view>

namespace kelvo::tool {

namespace {

constexpr std::uint16_t kPcm = 1;
constexpr std::uint16_t kFloat = 3;
constexpr std::uint16_t kExtensible = 0xFFFE;
constexpr std::uint32_t kMostChannels = 64;

static_assert([] {
    for (int byte = 0; byte < 256; ++byte)
        if (ByteSample(WideSample(static_cast<std::uint8_t>(byte))) != byte) return false;
    return true;
}());

ByteView BytesOf(std::string_view letters) {
    return {reinterpret_cast<const std::uint8_t*>(letters.data()), letters.size()};
}

bool Matches(ByteView bytes, std::string_view letters) {
    return std::ranges::equal(bytes, BytesOf(letters));
}

bool TakeFormat(ByteReader reader, WavLayout& layout) {
    std::uint16_t tag = reader.ReadU16();
    layout.channels = reader.ReadU16();
    layout.sample_rate = reader.ReadU32();
    reader.Skip(6);
    layout.bits = reader.ReadU16();
    if (tag == kExtensible) {
        reader.Skip(8);
        tag = reader.ReadU16();
    }
    layout.is_float = tag == kFloat;
    const bool knows_bits = layout.is_float ? layout.bits == 32
                                            : layout.bits == 8 || layout.bits == 16 ||
                                                  layout.bits == 24 || layout.bits == 32;
    return reader.Ok() && (tag == kPcm || tag == kFloat) && knows_bits && layout.channels > 0 &&
           layout.channels <= kMostChannels && layout.sample_rate > 0;
}

/// One sample in 16 bits.
std::int32_t SampleOf(const WavLayout& layout, const std::uint8_t* bytes) {
    if (layout.bits == 8) return (bytes[0] - 128) * 256;
    std::uint32_t value = 0;
    for (std::size_t i = layout.bits / 8; i-- > 0;)
        value = value << 8U | bytes[i];
    if (layout.is_float) {
        const float sample = std::bit_cast<float>(value);
        if (!(sample >= -1.0F && sample <= 1.0F)) return sample > 0 ? 32767 : -32768;
        return static_cast<std::int32_t>(std::lround(static_cast<double>(sample) * 32767));
    }
    // To the top, so that the sign is where it belongs.
    return static_cast<std::int32_t>(value << (32 - layout.bits)) >> 16;
}

} // namespace

std::array<std::uint8_t, kWavHeadBytes>
WavHead(std::uint32_t sample_rate, std::uint32_t bytes_per_sample, std::uint32_t data_bytes) {
    std::array<std::uint8_t, kWavHeadBytes> head{};
    ByteWriter writer{head};
    writer.WriteBytes(BytesOf("RIFF"));
    writer.WriteU32(static_cast<std::uint32_t>(kWavHeadBytes - 8) + data_bytes + data_bytes % 2);
    writer.WriteBytes(BytesOf("WAVEfmt "));
    writer.WriteU32(16);
    writer.WriteU16(kPcm);
    writer.WriteU16(1);
    writer.WriteU32(sample_rate);
    writer.WriteU32(sample_rate * bytes_per_sample);
    writer.WriteU16(static_cast<std::uint16_t>(bytes_per_sample));
    writer.WriteU16(static_cast<std::uint16_t>(bytes_per_sample * 8));
    writer.WriteBytes(BytesOf("data"));
    writer.WriteU32(data_bytes);
    return head;
}

Result<WavLayout> ParseWav(ByteView head, std::uint64_t file_size) {
    ByteReader reader{head};
    const bool is_riff = Matches(reader.ReadBytes(4), "RIFF");
    reader.Skip(4);
    if (!is_riff || !Matches(reader.ReadBytes(4), "WAVE")) return Error{Fault::BadValue, 0};
    WavLayout layout;
    bool has_format = false;
    while (reader.Remaining() >= 8) {
        const ByteView name = reader.ReadBytes(4);
        const std::uint32_t length = reader.ReadU32();
        const std::uint64_t start = reader.Offset();
        if (Matches(name, "data")) {
            if (!has_format) break;
            const std::uint64_t there = file_size - std::min<std::uint64_t>(start, file_size);
            layout.start = start;
            // A program that wrote into a pipe could not know the length.
            const bool is_known = length != 0xFFFFFFFF && (length != 0 || there == 0);
            layout.is_cut = is_known && length > there;
            layout.bytes = is_known ? std::min<std::uint64_t>(length, there) : there;
            layout.bytes -= layout.bytes % layout.BlockBytes();
            return layout;
        }
        if (Matches(name, "fmt ")) {
            if (!TakeFormat(reader, layout)) return Error{Fault::BadValue, start};
            has_format = true;
        }
        reader.Skip(std::uint64_t{length} + length % 2);
        if (!reader.Ok()) break;
    }
    return Error{Fault::BadValue, reader.Offset()};
}

std::int32_t MonoSample(const WavLayout& layout, const std::uint8_t* block) {
    std::int32_t sum = 0;
    for (std::uint32_t channel = 0; channel < layout.channels; ++channel)
        sum += SampleOf(layout, block + std::size_t{channel} * (layout.bits / 8));
    return sum / static_cast<std::int32_t>(layout.channels);
}

} // namespace kelvo::tool
