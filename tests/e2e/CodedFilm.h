#pragma once
// Films that tell where they are: every picture is a bar code of its number, every audio frame
// begins with clicks that spell the frame's number. So what is seen on a screen and heard from a
// loudspeaker can be told image by image and frame by frame.

#include "tests/e2e/SoundServer.h"
#include "tests/e2e/VirtualScreen.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::test {

struct CodedFilmPlan {
    int audio_frames_per_second = 5;
    int images_per_second = 25;
    int seconds = 10;
    std::uint32_t sample_rate = 22050;
    std::uint32_t bytes_per_sample = 1;
    /// 2 is whole pictures, 7 differences.
    int picture_type = 2;

    int Images() const { return images_per_second * seconds; }
    int AudioFrames() const { return audio_frames_per_second * seconds; }
    double PeriodMs() const { return static_cast<double>(1000 / images_per_second); }
    /// SyncNumber of an image: the audio frame that is heard when it is due.
    int AudioFrameOf(int image) const {
        return image * audio_frames_per_second / images_per_second;
    }
    /// How many images of the same audio frame lie before it.
    int IndexInAudioFrame(int image) const;
    std::string Name() const;
};

inline constexpr int kCodedWidth = 640;
inline constexpr int kCodedHeight = 480;

/// Writes the film (a .kva). @return what went wrong, or nothing
std::optional<std::string> MakeCodedFilm(const std::string& file, const CodedFilmPlan& plan);
/// The same as two files, the given name with .kvf and .kaf.
std::optional<std::string> MakeCodedPair(const std::string& name, const CodedFilmPlan& plan);

/// Reads the bar code of a picture in natural size.
/// @param left, top  of the picture on the screen
/// @return nothing while no whole bar code is there
std::optional<int> ReadBarCode(const VirtualScreen& screen, int left, int top);

struct HeardFrame {
    int code; ///< number of the audio frame modulo kFrameCodes
    Clock::time_point at;
};
inline constexpr int kFrameCodes = 256;
/// The beginnings of audio frames in a recording, in order.
std::vector<HeardFrame> HeardFrames(const Recording& recording);

} // namespace kelvo::test
