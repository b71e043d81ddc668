#pragma once
// FFmpeg's headers, which know no C++, and handles that free what their calls hand out.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/avutil.h>
#include <libavutil/channel_layout.h>
#include <libavutil/dict.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/mathematics.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

namespace kelvo::media_tool {

/// For calls that take a pointer to the pointer and clear it.
template <auto Free>
struct FreeBy {
    template <class T>
    void operator()(T* object) const {
        Free(&object);
    }
};
/// For calls that take the pointer.
template <auto Free>
struct FreeWith {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};

using CodecHandle = std::unique_ptr<AVCodecContext, FreeBy<avcodec_free_context>>;
using FrameHandle = std::unique_ptr<AVFrame, FreeBy<av_frame_free>>;
using PacketHandle = std::unique_ptr<AVPacket, FreeBy<av_packet_free>>;
using ResamplerHandle = std::unique_ptr<SwrContext, FreeBy<swr_free>>;
using ScalerHandle = std::unique_ptr<SwsContext, FreeWith<sws_freeContext>>;
using SampleQueueHandle = std::unique_ptr<AVAudioFifo, FreeWith<av_audio_fifo_free>>;

/// What an error code of the libraries means.
std::string ErrorText(int error);

} // namespace kelvo::media_tool
