#include "media/AudioHeader.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"

namespace kelvo {

namespace {

// Beyond every device and every recording; keeps products inside 32 bits.
constexpr std::uint32_t kHighestSampleRate = 768000;
constexpr std::uint32_t kHighestChannels = 255;

WAVEFORMATEX MonoFormat(std::uint32_t sample_rate, std::uint32_t bytes_per_sample) {
    return {.wFormatTag = WAVE_FORMAT_PCM,
            .nChannels = 1,
            .nSamplesPerSec = sample_rate,
            .nAvgBytesPerSec = sample_rate * bytes_per_sample,
            .nBlockAlign = static_cast<WORD>(bytes_per_sample),
            .wBitsPerSample = static_cast<WORD>(8U * bytes_per_sample),
            .cbSize = 0};
}

bool FormatAgrees(const AudioHeader& header) {
    const WAVEFORMATEX& format = header.Format;
    return format.wFormatTag == WAVE_FORMAT_PCM && format.nChannels >= 1 &&
           format.nChannels <= kHighestChannels && format.nSamplesPerSec == header.SampleRate &&
           format.wBitsPerSample == 8U * header.BytesPerSample &&
           format.nBlockAlign == format.nChannels * header.BytesPerSample && format.cbSize == 0;
}

} // namespace

AudioHeader BuildWaveFormat(std::uint32_t sample_rate, std::uint32_t bytes_per_sample,
                            std::uint32_t frames_per_second) {
    AudioHeader header;
    header.SampleRate = sample_rate;
    header.BytesPerSample = bytes_per_sample;
    header.nFramesAlSec = frames_per_second;
    if (frames_per_second != 0) {
        header.FrameBytes = sample_rate * bytes_per_sample / frames_per_second;
    }
    header.Format = MonoFormat(sample_rate, bytes_per_sample);
    return header;
}

Result<AudioHeader> ParseAudioHeader(ByteView bytes) {
    ByteReader reader{bytes};
    AudioHeader header;
    header.SampleRate = reader.ReadU32();
    header.BytesPerSample = reader.ReadU32();
    header.nFramesAlSec = reader.ReadU32();
    header.FrameBytes = reader.ReadU32();
    WAVEFORMATEX& format = header.Format;
    format.wFormatTag = reader.ReadU16();
    format.nChannels = reader.ReadU16();
    format.nSamplesPerSec = reader.ReadU32();
    format.nAvgBytesPerSec = reader.ReadU32();
    format.nBlockAlign = reader.ReadU16();
    format.wBitsPerSample = reader.ReadU16();
    format.cbSize = reader.ReadU16();
    if (!reader.Ok()) return Error{Fault::EndsEarly, reader.Offset()};
    return header;
}

std::array<std::uint8_t, kAudioHeaderSize> AudioHeaderBytes(const AudioHeader& header) {
    std::array<std::uint8_t, kAudioHeaderSize> bytes{};
    ByteWriter writer{bytes};
    writer.WriteU32(header.SampleRate);
    writer.WriteU32(header.BytesPerSample);
    writer.WriteU32(header.nFramesAlSec);
    writer.WriteU32(header.FrameBytes);
    const WAVEFORMATEX& format = header.Format;
    writer.WriteU16(format.wFormatTag);
    writer.WriteU16(format.nChannels);
    writer.WriteU32(format.nSamplesPerSec);
    writer.WriteU32(format.nAvgBytesPerSec);
    writer.WriteU16(format.nBlockAlign);
    writer.WriteU16(format.wBitsPerSample);
    writer.WriteU16(format.cbSize);
    return bytes;
}

Error CheckAudioHeader(const AudioHeader& header, std::uint32_t channels) {
    if (header.SampleRate == 0) return {Fault::BadValue, 0};
    if (header.SampleRate > kHighestSampleRate) return {Fault::TooLarge, 0};
    if (header.BytesPerSample != 1 && header.BytesPerSample != 2) return {Fault::BadValue, 4};
    if (header.nFramesAlSec == 0) return {Fault::BadValue, 8};
    const std::uint32_t frame_bytes =
        header.SampleRate * header.BytesPerSample / header.nFramesAlSec;
    if (frame_bytes == 0) return {Fault::BadValue, 8};
    if (header.FrameBytes == frame_bytes) return {};
    const bool interleaved =
        channels > 1 && channels <= kHighestChannels && header.FrameBytes == frame_bytes * channels;
    if (!interleaved) return {Fault::Mismatch, 12};
    return {};
}

void RepairWaveFormat(AudioHeader& header) {
    if (!FormatAgrees(header)) header.Format = MonoFormat(header.SampleRate, header.BytesPerSample);
}

bool SameForm(const AudioHeader& a, const AudioHeader& b) {
    return a.SampleRate == b.SampleRate && a.BytesPerSample == b.BytesPerSample &&
           a.nFramesAlSec == b.nFramesAlSec && a.FrameBytes == b.FrameBytes;
}

} // namespace kelvo
