#pragma once
// The formats that can be written, and the coders that each takes for either purpose.

#include "tools/media/Libraries.h"

#include <span>
#include <string_view>

namespace kelvo::media_tool {

enum class Preset : std::uint8_t {
    Usual,   ///< what the format is used for: archive where it is lossless by itself, else share
    Archive, ///< nothing is lost
    Share,   ///< small, and plays everywhere
};

struct PictureCoder {
    const char* encoder;
    AVPixelFormat pixels;
    const char* options; ///< as the libraries spell them: "key=value:key=value"
    bool lossless;
};

struct SoundCoder {
    const char* encoder;
    int bits_per_channel; ///< a second; 0 where the coder decides
    bool lossless;
};

/// The first of each list that these libraries have is taken. An empty list: the format has no room
/// for it.
struct OutputFormat {
    std::string_view name; ///< also the extension
    const char* muxer;
    bool usual_is_archive;
    std::span<const PictureCoder> archive_picture;
    std::span<const PictureCoder> share_picture;
    std::span<const SoundCoder> archive_sound;
    std::span<const SoundCoder> share_sound;

    bool IsArchive(Preset preset) const {
        return preset == Preset::Archive || (preset == Preset::Usual && usual_is_archive);
    }
    std::span<const PictureCoder> Pictures(Preset preset) const {
        return IsArchive(preset) ? archive_picture : share_picture;
    }
    std::span<const SoundCoder> Sounds(Preset preset) const {
        return IsArchive(preset) ? archive_sound : share_sound;
    }
};

/// By name or extension, without regard to the case of its letters; null when there is none.
const OutputFormat* FindOutputFormat(std::string_view name);

} // namespace kelvo::media_tool
