#pragma once
// Samples of 16 bits in, one coded stream of a file out.

#include "framework/base/Bytes.h"
#include "tools/media/MediaWriter.h"
#include "tools/media/OutputFormats.h"
#include "tools/media_stream/MediaStream.h"

#include <cstdint>
#include <span>

namespace kelvo::media_tool {

class SoundEncoder {
public:
    SoundEncoder(MediaWriter& writer, Report& report) : writer_(writer), report_(report) {}

    /// Takes the first of the coders that is there. @return false after it was reported why not
    bool Open(const media_stream::SoundFormat& format, std::span<const SoundCoder> coders);
    /// @param samples  of 16 bits, those of one moment side by side
    bool Add(ByteView samples);
    /// Codes what is left, which may be less than a whole frame of the coder.
    bool Finish();

private:
    bool SetUpCoder(const AVCodec& codec, const SoundCoder& coder);
    bool SetUpConversion();
    bool Convert(const std::uint8_t* samples, int count);
    /// Codes whole frames; the rest, too, when nothing follows.
    bool CodeQueue(bool is_last);
    bool Send(const AVFrame* frame);

    MediaWriter& writer_;
    Report& report_;
    media_stream::SoundFormat format_;
    CodecHandle coder_;
    AVStream* stream_ = nullptr;
    ResamplerHandle resampler_;
    SampleQueueHandle queue_; ///< in the coder's form
    FrameHandle converted_;
    PacketHandle packet_;
    std::int64_t position_ = 0; ///< samples that were coded
};

} // namespace kelvo::media_tool
