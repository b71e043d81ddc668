#pragma once
// The images of a foreign file as the stream wants them: red, green and blue bytes, one size, and
// times that rise.

#include "framework/base/Bytes.h"
#include "tools/media/ForeignFile.h"
#include "tools/media_stream/MediaStream.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo::media_tool {

struct PictureWishes {
    int width = 0; ///< 0: the file's own
    int height = 0;
    std::optional<AVRational> rate = {}; ///< images a second; none: each at its own time
};

class PictureSource {
public:
    explicit PictureSource(Report& report) : report_(report), file_(report) {}

    /// @return false when there is no picture; why not was reported where that is no answer
    bool Open(const std::string& name, const PictureWishes& wishes);
    const media_stream::PictureFormat& Format() const { return format_; }
    const ForeignFile& File() const { return file_; }

    /// The next image. @return false at the end
    bool Advance();
    const media_stream::ImageHead& Head() const { return head_; }
    ByteView Pixels() const { return pixels_; }
    /// When it is shown, in seconds from the file's start.
    double Time() const;
    /// When the next one takes over.
    double EndTime() const;

private:
    bool ChooseSize(const PictureWishes& wishes);
    bool ChooseTicks(const PictureWishes& wishes);
    /// Decodes the frame behind the one that is shown. @return false at the end
    bool ReadAhead();
    /// Turns the frame read ahead into pixels.
    bool Convert();
    void Turn(const AVFrame& flat);

    Report& report_;
    ForeignFile file_;
    media_stream::PictureFormat format_;
    AVRational tick_{1, 1};
    bool repeats_ = false; ///< an image for every tick
    int turns_ = 0;        ///< quarters, clockwise
    ScalerHandle scaler_;
    FrameHandle flat_; ///< red, green, blue, before it is turned
    const AVFrame* ahead_ = nullptr;
    std::int64_t ahead_tick_ = 0;
    std::int64_t last_length_ = 1; ///< of the frame that is shown, as the file says
    std::int64_t shown_until_ = 0; ///< tick at which the next frame takes over
    media_stream::ImageHead head_;
    std::vector<std::uint8_t> pixels_;
    bool has_begun_ = false;
};

} // namespace kelvo::media_tool
