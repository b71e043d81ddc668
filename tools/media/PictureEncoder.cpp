#include "tools/media/PictureEncoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>

namespace kelvo::media_tool {

namespace {

/// Above this, ticks are a clock and no rate of images.
constexpr double kFastestRate = 240;

AVRational TickOf(const media_stream::PictureFormat& format) {
    AVRational tick{};
    // A fraction that the libraries' numbers cannot hold becomes the nearest that they can.
    av_reduce(&tick.num, &tick.den, format.ticks_denominator, format.ticks_numerator, INT_MAX);
    return tick;
}

} // namespace

bool PictureEncoder::SetUpCoder(const AVCodec& codec, const PictureCoder& coder) {
    coder_.reset(avcodec_alloc_context3(&codec));
    if (!coder_) return report_.NotDone("there is not enough memory");
    const bool halves = coder.pixels == AV_PIX_FMT_YUV420P;
    const std::uint32_t odd = halves ? 1 : 0;
    coder_->width = static_cast<int>((format_.width + odd) & ~odd);
    coder_->height = static_cast<int>((format_.height + odd) & ~odd);
    coder_->pix_fmt = coder.pixels;
    coder_->time_base = TickOf(format_);
    coder_->sample_aspect_ratio = {1, 1};
    coder_->thread_count = 0; // as many as there are cores
    const AVRational rate = av_inv_q(coder_->time_base);
    if (av_q2d(rate) <= kFastestRate) coder_->framerate = rate;
    if (halves) {
        coder_->colorspace = AVCOL_SPC_SMPTE170M;
        coder_->color_range = AVCOL_RANGE_MPEG;
    }
    if (writer_.NeedsGlobalHeaders()) coder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    AVDictionary* options = nullptr;
    av_dict_parse_string(&options, coder.options, "=", ":", 0);
    const int result = avcodec_open2(coder_.get(), &codec, &options);
    const bool all_taken = av_dict_count(options) == 0;
    av_dict_free(&options);
    if (result >= 0 && all_taken) return true;
    return report_.NotDone(fmt::format("the coder {} cannot be used: {}", coder.encoder,
                                       result < 0 ? ErrorText(result) : "it knows other options"));
}

bool PictureEncoder::SetUpFrame() {
    frame_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (!frame_ || !packet_) return report_.NotDone("there is not enough memory");
    frame_->format = coder_->pix_fmt;
    frame_->width = coder_->width;
    frame_->height = coder_->height;
    frame_->colorspace = coder_->colorspace;
    frame_->color_range = coder_->color_range;
    if (av_frame_get_buffer(frame_.get(), 0) < 0) {
        return report_.NotDone("there is not enough memory");
    }
    if (coder_->pix_fmt == AV_PIX_FMT_PAL8) return true;
    const int width = static_cast<int>(format_.width);
    const int height = static_cast<int>(format_.height);
    scaler_.reset(sws_getContext(width, height, AV_PIX_FMT_RGB24, width, height, coder_->pix_fmt,
                                 SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP, nullptr,
                                 nullptr, nullptr));
    return scaler_ != nullptr || report_.NotDone("its pixels cannot be turned into the coder's");
}

bool PictureEncoder::Open(const media_stream::PictureFormat& format,
                          std::span<const PictureCoder> coders) {
    format_ = format;
    const AVCodec* codec = nullptr;
    const auto known = std::ranges::find_if(coders, [&codec](const PictureCoder& coder) {
        codec = avcodec_find_encoder_by_name(coder.encoder);
        return codec != nullptr;
    });
    if (known == coders.end()) return report_.NotDone("these libraries have no coder for it");
    if (!SetUpCoder(*codec, *known) || !SetUpFrame()) return false;
    stream_ = writer_.AddStream();
    if (stream_ == nullptr ||
        avcodec_parameters_from_context(stream_->codecpar, coder_.get()) < 0) {
        return report_.NotDone("there is not enough memory");
    }
    stream_->time_base = coder_->time_base;
    if (coder_->framerate.num != 0) stream_->avg_frame_rate = coder_->framerate;
    if (known->lossless) {
        // So that what reads it again knows that 5-5-5 pixels hold all of it.
        const std::string bits = fmt::format("{}", format.significant_bits);
        av_dict_set(&stream_->metadata, "SIGNIFICANT_BITS", bits.c_str(), 0);
    }
    return true;
}

void PictureEncoder::FillWithPalette(ByteView pixels) {
    if (!palette_.Choose(pixels) && !colours_are_lost_) {
        colours_are_lost_ = true;
        report_.Damaged("it has images of more than 256 colours: some are replaced by others");
    }
    std::ranges::copy(palette_.Colours(), reinterpret_cast<std::uint32_t*>(frame_->data[1]));
    for (std::size_t y = 0; y < format_.height; ++y) {
        std::uint8_t* const row =
            frame_->data[0] + static_cast<std::ptrdiff_t>(y) * frame_->linesize[0];
        const ByteView from = pixels.subspan(y * format_.width * 3, format_.width * std::size_t{3});
        for (std::size_t x = 0; x < format_.width; ++x)
            row[x] = palette_.IndexOf(from[x * 3], from[x * 3 + 1], from[x * 3 + 2]);
    }
}

void PictureEncoder::RepeatEdges() {
    const auto width = static_cast<std::ptrdiff_t>(format_.width);
    const auto height = static_cast<std::ptrdiff_t>(format_.height);
    // The planes of colour are rounded up already.
    const std::ptrdiff_t stride = frame_->linesize[0];
    std::uint8_t* const plane = frame_->data[0];
    if (coder_->width > width) {
        for (std::ptrdiff_t y = 0; y < height; ++y)
            plane[y * stride + width] = plane[y * stride + width - 1];
    }
    if (coder_->height > height) {
        std::copy_n(plane + (height - 1) * stride, coder_->width, plane + height * stride);
    }
}

void PictureEncoder::FillFrame(ByteView pixels) {
    if (coder_->pix_fmt == AV_PIX_FMT_PAL8) return FillWithPalette(pixels);
    const std::uint8_t* const rows[4] = {pixels.data()};
    const int strides[4] = {static_cast<int>(format_.width * 3)};
    sws_scale(scaler_.get(), rows, strides, 0, static_cast<int>(format_.height), frame_->data,
              frame_->linesize);
    if (coder_->pix_fmt == AV_PIX_FMT_YUV420P) RepeatEdges();
}

bool PictureEncoder::Add(const media_stream::ImageHead& head, ByteView pixels) {
    // The coder may still look at the image before.
    if (av_frame_make_writable(frame_.get()) < 0) {
        return report_.NotDone("there is not enough memory");
    }
    FillFrame(pixels);
    frame_->pts = static_cast<std::int64_t>(head.start);
    durations_[frame_->pts] = head.duration;
    return Send(frame_.get());
}

bool PictureEncoder::Finish() {
    return Send(nullptr);
}

bool PictureEncoder::Send(const AVFrame* frame) {
    int result = avcodec_send_frame(coder_.get(), frame);
    while (result >= 0) {
        result = avcodec_receive_packet(coder_.get(), packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return true;
        if (result < 0) break;
        const auto duration = durations_.find(packet_->pts);
        if (duration != durations_.end()) {
            packet_->duration = duration->second;
            durations_.erase(duration);
        }
        if (!writer_.Write(packet_.get(), *stream_, coder_->time_base)) return false;
    }
    return report_.NotDone("an image cannot be coded: " + ErrorText(result));
}

} // namespace kelvo::media_tool
