#pragma once
// How a picture track is linked to a sound track: which audio frame each image is shown with. Films
// are linked when they are made; a player only reads the numbers.

#include <cstdint>

namespace kelvo {

/// The link of two tracks, from which every image's SyncNumber follows.
struct SyncLink {
    std::int32_t images_per_audio_frame = 0;
    std::int32_t offset = 0; ///< whole images between picture and sound

    /// True for a whole number of images per audio frame, at least one, and an offset of no more
    /// than half the film.
    static constexpr bool IsValid(int images_per_second, int audio_frames_per_second, int offset,
                                  int image_count) {
        return audio_frames_per_second > 0 && images_per_second >= audio_frames_per_second &&
               images_per_second % audio_frames_per_second == 0 && offset <= image_count / 2 &&
               -std::int64_t{offset} <= image_count / 2;
    }
    /// Only for a valid pair of rates.
    static constexpr SyncLink Of(int images_per_second, int audio_frames_per_second,
                                 int offset = 0) {
        return {images_per_second / audio_frames_per_second, offset};
    }

    /// Images before the sound carry 0.
    constexpr std::uint32_t NumberOf(int image) const {
        const std::int64_t shifted = std::int64_t{image} + offset;
        return shifted < 0 ? 0U : static_cast<std::uint32_t>(shifted / images_per_audio_frame);
    }
};

} // namespace kelvo
