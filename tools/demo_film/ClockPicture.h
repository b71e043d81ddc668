#pragma once
// The picture of the demo film: a clock whose hand sweeps, a small dial that goes round once a
// second, the number of the image, and a pulse of light at every full second, the instant at which
// the bell strikes.

#include "framework/base/Bytes.h"
#include "tools/demo_film/Canvas.h"

#include <cstdint>
#include <vector>

namespace kelvo::demo {

class ClockPicture {
public:
    static constexpr int kWidth = 640;
    static constexpr int kHeight = 480;

    /// @param images_per_second  how far an image's number counts
    explicit ClockPicture(int images_per_second);

    /// @param image  its number, shown with three digits
    /// @param bits   kWidth x kHeight 5-5-5 pixels, rows bottom-up
    void Draw(int image, ByteSpan bits) const;

private:
    int images_per_second_;
    Canvas still_; ///< everything that never moves
    std::vector<std::uint8_t> still_bits_;
};

} // namespace kelvo::demo
