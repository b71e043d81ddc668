#pragma once
// The sound of a foreign file as the stream wants it: samples of 16 bits that follow each other
// without a hole from the file's start on.

#include "framework/base/Bytes.h"
#include "tools/media/ForeignFile.h"
#include "tools/media_stream/MediaStream.h"

#include <cstdint>
#include <vector>

namespace kelvo::media_tool {

struct SoundWishes {
    int sample_rate = 0; ///< 0: the file's own
    int channels = 0;    ///< 0: the file's own
};

class SoundSource {
public:
    explicit SoundSource(Report& report) : report_(report), file_(report) {}

    /// @return false when there is no sound; why not was reported where that is no answer
    bool Open(const std::string& name, const SoundWishes& wishes);
    const media_stream::SoundFormat& Format() const { return format_; }
    const ForeignFile& File() const { return file_; }

    /// The next piece, a tenth of a second at most. @return false at the end
    bool Advance();
    ByteView Samples() const { return piece_; }
    /// When it is heard, in seconds from the file's start.
    double Time() const;

private:
    bool SetUpConversion(const AVFrame& frame);
    /// Appends the next frame to what is ready. @return false at the end
    bool ReadFrame();
    /// Silence where the file has a hole; what overlaps goes. @return samples to drop at the start
    std::int64_t Settle(const AVFrame& frame);
    bool Convert(const AVFrame* frame);
    std::size_t MomentBytes() const { return std::size_t{2} * format_.channels; }

    Report& report_;
    ForeignFile file_;
    media_stream::SoundFormat format_;
    AVChannelLayout layout_{};
    ResamplerHandle resampler_;
    int frame_format_ = -1; ///< what the resampler was set up for
    int frame_rate_ = 0;
    int frame_channels_ = 0;
    std::vector<std::uint8_t> ready_;
    std::size_t next_ = 0; ///< the first byte of `ready_` that was no piece yet
    std::vector<std::uint8_t> silence_;
    ByteView piece_;
    std::uint64_t piece_moment_ = 0; ///< samples before the piece
    std::uint64_t moments_ = 0;      ///< samples that were ever made ready
    std::int64_t to_fill_ = 0;       ///< silence before what comes
    bool at_end_ = false;
};

} // namespace kelvo::media_tool
