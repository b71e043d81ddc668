#include "tools/kelvotool/film/ConversionRules.h"

#include "container/codec/CompressionTypes.h"

#include <fmt/format.h>

#include <algorithm>

namespace kelvo::tool {

namespace {

constexpr unsigned kPixelBits = 16;       // of the types for pictures alone
constexpr std::uint32_t kSampleBytes = 1; // of the types that lose something of a sound

std::optional<std::string> WhyNotForAudio(const TrackDescription& track,
                                          const codec::CompressionType& type) {
    if (!type.codes_audio) return fmt::format("type {} is for pictures alone", type.id);
    if (track.vorbis && track.audio && CheckAudioHeader(*track.audio).fault != Fault::None) {
        return fmt::format("its frames hold {} channels, and those of a record container hold one",
                           track.vorbis->channels);
    }
    const bool needs_short_samples = !type.lossless;
    if (needs_short_samples && track.audio && track.audio->BytesPerSample != kSampleBytes) {
        return fmt::format("type {} codes 8-bit samples, and this sound has 16 bits", type.id);
    }
    return std::nullopt;
}

std::optional<std::string> WhyNotForVideo(const TrackDescription& track,
                                          const codec::CompressionType& type) {
    if (!type.codes_video) return fmt::format("type {} is for sound alone", type.id);
    const bool codes_pixels = !type.codes_audio; // the others take the bytes as they come
    if (codes_pixels && track.video && track.video->bitmap.biBitCount != kPixelBits) {
        return fmt::format("type {} codes 16-bit pixels, and these have {} bits", type.id,
                           WORD{track.video->bitmap.biBitCount});
    }
    if (codes_pixels && track.container && track.container->RecordLength % 2 != 0) {
        return fmt::format("type {} codes whole 16-bit pixels, and its records have an odd length",
                           type.id);
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> WhyNotConvertible(const TrackDescription& track, int type) {
    const codec::CompressionType* const row = codec::FindCompressionType(type);
    if (row == nullptr) return fmt::format("there is no type {}", type);
    if (type == codec::kTypeVorbis) {
        return "type 69 is made by encoding the sound anew, which convert does not do";
    }
    if (!track.track_header_is_sound) return "it is neither a sound nor a picture track";
    return track.kind == TrackKind::Audio ? WhyNotForAudio(track, *row)
                                          : WhyNotForVideo(track, *row);
}

ContainerHeader SourceHeader(const TrackDescription& track) {
    if (track.container) return *track.container;
    constexpr std::uint32_t kAudioCreator = 1;
    ContainerHeader header;
    header.UserHeaderSize = static_cast<std::uint32_t>(kAudioHeaderSize);
    header.RecordLength = track.vorbis ? track.vorbis->FrameBytes : 0;
    header.SideLength = static_cast<std::uint32_t>(kAudioSideLength);
    header.CreatorValue = kAudioCreator;
    header.RecordCount = track.RecordCount();
    header.KeyInterval = kNoKeyInterval;
    return header;
}

bool SettleKeyInterval(ContainerHeader& header, std::optional<std::uint32_t> given) {
    const auto* const type = codec::FindCompressionType(static_cast<int>(header.CompressionType));
    const bool only_first_is_key = type != nullptr && type->differential && !type->forces_key;
    if (!only_first_is_key || header.KeyInterval >= header.RecordCount) return true;
    if (given) return false;
    header.KeyInterval = std::max(header.RecordCount, kNoKeyInterval);
    return true;
}

} // namespace kelvo::tool
