#pragma once
// Short films of 640 x 480 pixels to measure the picture codecs on, drawn by code: the same on
// every machine.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvo::films {

inline constexpr std::size_t kWidth = 640;
inline constexpr std::size_t kHeight = 480;
inline constexpr std::size_t kFrameBytes = kWidth * kHeight * 2;
inline constexpr std::size_t kFrames = 12;

enum class Scene : std::uint8_t {
    Drawing, ///< flat shapes, one of them moving
    Camera,  ///< soft light with a little noise everywhere, and slow movement
    Screen,  ///< windows full of writing, one of which scrolls
};
const char* Name(Scene scene);

using Frame = std::vector<std::uint8_t>;

/// kFrames frames of 5-5-5 pixels.
std::vector<Frame> Draw(Scene scene);

} // namespace kelvo::films
