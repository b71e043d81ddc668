#pragma once
// Images of red, green and blue bytes in, one coded stream of a file out.

#include "framework/base/Bytes.h"
#include "tools/media/MediaWriter.h"
#include "tools/media/OutputFormats.h"
#include "tools/media/Palette.h"
#include "tools/media_stream/MediaStream.h"

#include <cstdint>
#include <map>
#include <span>

namespace kelvo::media_tool {

class PictureEncoder {
public:
    PictureEncoder(MediaWriter& writer, Report& report) : writer_(writer), report_(report) {}

    /// Takes the first of the coders that is there. @return false after it was reported why not
    bool Open(const media_stream::PictureFormat& format, std::span<const PictureCoder> coders);
    /// @param pixels  width x height x 3 bytes, top row first
    bool Add(const media_stream::ImageHead& head, ByteView pixels);
    /// Writes what the coder still holds.
    bool Finish();

private:
    bool SetUpCoder(const AVCodec& codec, const PictureCoder& coder);
    bool SetUpFrame();
    void FillFrame(ByteView pixels);
    void FillWithPalette(ByteView pixels);
    /// A coder that halves the colours needs whole pairs of pixels: the last one is repeated.
    void RepeatEdges();
    bool Send(const AVFrame* frame);

    MediaWriter& writer_;
    Report& report_;
    media_stream::PictureFormat format_;
    CodecHandle coder_;
    AVStream* stream_ = nullptr;
    FrameHandle frame_;
    PacketHandle packet_;
    ScalerHandle scaler_;
    std::map<std::int64_t, std::int64_t> durations_; ///< by start, of images in the coder
    Palette palette_;
    bool colours_are_lost_ = false;
};

} // namespace kelvo::media_tool
