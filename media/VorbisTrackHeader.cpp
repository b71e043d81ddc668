#include "media/VorbisTrackHeader.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr std::uint32_t kMostChannels = 255;
constexpr std::uint32_t kHighestSampleRate = 768000;

// Offsets of the description's fields in the track.
constexpr std::uint64_t kDescriptionOffset = kVorbisSignature.size();
constexpr std::uint64_t kRateOffset = kDescriptionOffset + 4;
constexpr std::uint64_t kChannelsOffset = kDescriptionOffset + 8;
constexpr std::uint64_t kWidthOffset = kDescriptionOffset + 12;
constexpr std::uint64_t kFramesOffset = kDescriptionOffset + 16;
constexpr std::uint64_t kFrameBytesOffset = kDescriptionOffset + 20;

// And one in the header.
constexpr std::uint64_t kHeaderFrameBytesOffset = 12;

} // namespace

bool StartsWithVorbisSignature(ByteView head) {
    const auto byte_of = [](char letter) { return static_cast<std::uint8_t>(letter); };
    return head.size() >= kVorbisSignature.size() &&
           std::ranges::equal(head.first(kVorbisSignature.size()), kVorbisSignature, {}, {},
                              byte_of);
}

Result<VorbisDescription> ParseVorbisDescription(ByteView bytes) {
    ByteReader reader{bytes};
    VorbisDescription description;
    description.frame_count = reader.ReadU32();
    description.SampleRate = reader.ReadU32();
    description.channels = reader.ReadU32();
    description.BytesPerSample = reader.ReadU32();
    description.nFramesAlSec = reader.ReadU32();
    description.FrameBytes = reader.ReadU32();
    if (!reader.Ok()) return Error{Fault::EndsEarly, reader.Offset()};
    return description;
}

std::array<std::uint8_t, VorbisDescription::kBytes>
VorbisDescriptionBytes(const VorbisDescription& description) {
    std::array<std::uint8_t, VorbisDescription::kBytes> bytes{};
    ByteWriter writer{bytes};
    writer.WriteU32(description.frame_count);
    writer.WriteU32(description.SampleRate);
    writer.WriteU32(description.channels);
    writer.WriteU32(description.BytesPerSample);
    writer.WriteU32(description.nFramesAlSec);
    writer.WriteU32(description.FrameBytes);
    return bytes;
}

Error CheckVorbisDescription(const VorbisDescription& description) {
    if (description.SampleRate == 0 || description.SampleRate > kHighestSampleRate) {
        return {Fault::BadValue, kRateOffset};
    }
    if (description.channels == 0 || description.channels > kMostChannels) {
        return {Fault::BadValue, kChannelsOffset};
    }
    if (description.BytesPerSample != 1 && description.BytesPerSample != 2) {
        return {Fault::BadValue, kWidthOffset};
    }
    if (description.nFramesAlSec == 0) return {Fault::BadValue, kFramesOffset};
    const std::uint32_t mono =
        description.SampleRate * description.BytesPerSample / description.nFramesAlSec;
    if (description.FrameBytes == 0 ||
        (description.FrameBytes != mono && description.FrameBytes != mono * description.channels)) {
        return {Fault::Mismatch, kFrameBytesOffset};
    }
    if (description.FrameBytes > kLargestVorbisFrame) return {Fault::TooLarge, kFrameBytesOffset};
    return {};
}

Error CheckVorbisSoundHeader(const AudioHeader& header, const VorbisDescription& description) {
    const Error error = CheckAudioHeader(header, description.channels);
    if (error.fault != Fault::None) return error;
    const bool same_frames = header.FrameBytes == description.FrameBytes &&
                             header.BytesPerSample == description.BytesPerSample;
    if (!same_frames) return {Fault::Mismatch, kHeaderFrameBytesOffset};
    return {};
}

} // namespace kelvo
