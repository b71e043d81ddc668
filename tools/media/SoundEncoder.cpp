#include "tools/media/SoundEncoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace kelvo::media_tool {

namespace {

constexpr int kUsualFrame = 4096; ///< samples, for coders that take any number

AVSampleFormat ChooseFormat(const AVCodec& codec) {
    const auto takes = [&codec](AVSampleFormat wanted) {
        for (const AVSampleFormat* format = codec.sample_fmts;
             format != nullptr && *format != AV_SAMPLE_FMT_NONE; ++format) {
            if (*format == wanted) return true;
        }
        return false;
    };
    for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_S16P}) {
        if (takes(format)) return format;
    }
    return codec.sample_fmts == nullptr ? AV_SAMPLE_FMT_S16 : *codec.sample_fmts;
}

/// The rate itself where the coder takes it, else the next one above, so that nothing is lost.
int ChooseRate(const AVCodec& codec, int rate) {
    if (codec.supported_samplerates == nullptr) return rate;
    int above = 0;
    int highest = 0;
    for (const int* known = codec.supported_samplerates; *known != 0; ++known) {
        if (*known >= rate && (above == 0 || *known < above)) above = *known;
        highest = std::max(highest, *known);
    }
    return above != 0 ? above : highest;
}

} // namespace

bool SoundEncoder::SetUpCoder(const AVCodec& codec, const SoundCoder& coder) {
    coder_.reset(avcodec_alloc_context3(&codec));
    if (!coder_) return report_.NotDone("there is not enough memory");
    coder_->sample_fmt = ChooseFormat(codec);
    coder_->sample_rate = ChooseRate(codec, static_cast<int>(format_.sample_rate));
    coder_->time_base = {1, coder_->sample_rate};
    av_channel_layout_default(&coder_->ch_layout, static_cast<int>(format_.channels));
    coder_->bit_rate = std::int64_t{coder.bits_per_channel} * format_.channels;
    if (writer_.NeedsGlobalHeaders()) coder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const int result = avcodec_open2(coder_.get(), &codec, nullptr);
    if (result >= 0) return true;
    return report_.NotDone(fmt::format("the coder {} cannot code {} channels of {} samples a "
                                       "second: {}",
                                       coder.encoder, format_.channels, format_.sample_rate,
                                       ErrorText(result)));
}

bool SoundEncoder::SetUpConversion() {
    SwrContext* resampler = nullptr;
    const int result = swr_alloc_set_opts2(
        &resampler, &coder_->ch_layout, coder_->sample_fmt, coder_->sample_rate, &coder_->ch_layout,
        AV_SAMPLE_FMT_S16, static_cast<int>(format_.sample_rate), 0, nullptr);
    resampler_.reset(resampler);
    queue_.reset(
        av_audio_fifo_alloc(coder_->sample_fmt, coder_->ch_layout.nb_channels, kUsualFrame));
    converted_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (result >= 0 && queue_ && converted_ && packet_ && swr_init(resampler) >= 0) return true;
    return report_.NotDone("its sound cannot be turned into the coder's");
}

bool SoundEncoder::Open(const media_stream::SoundFormat& format,
                        std::span<const SoundCoder> coders) {
    format_ = format;
    constexpr std::uint32_t kHighestRate = 768'000;
    if (format.sample_rate > kHighestRate) {
        return report_.NotDone("there are too many samples a second");
    }
    const AVCodec* codec = nullptr;
    const auto known = std::ranges::find_if(coders, [&codec](const SoundCoder& coder) {
        codec = avcodec_find_encoder_by_name(coder.encoder);
        return codec != nullptr;
    });
    if (known == coders.end()) return report_.NotDone("these libraries have no coder for it");
    if (!SetUpCoder(*codec, *known) || !SetUpConversion()) return false;
    stream_ = writer_.AddStream();
    if (stream_ == nullptr ||
        avcodec_parameters_from_context(stream_->codecpar, coder_.get()) < 0) {
        return report_.NotDone("there is not enough memory");
    }
    stream_->time_base = coder_->time_base;
    if (known->lossless) {
        const std::string bits = fmt::format("{}", format.significant_bits);
        av_dict_set(&stream_->metadata, "SIGNIFICANT_BITS", bits.c_str(), 0);
    }
    return true;
}

bool SoundEncoder::Convert(const std::uint8_t* samples, int count) {
    const int room = swr_get_out_samples(resampler_.get(), count);
    if (room <= 0) return true;
    av_frame_unref(converted_.get());
    converted_->format = coder_->sample_fmt;
    converted_->nb_samples = room;
    if (av_channel_layout_copy(&converted_->ch_layout, &coder_->ch_layout) < 0 ||
        av_frame_get_buffer(converted_.get(), 0) < 0) {
        return report_.NotDone("there is not enough memory");
    }
    const std::uint8_t* planes[] = {samples};
    const int made = swr_convert(resampler_.get(), converted_->extended_data, room,
                                 samples == nullptr ? nullptr : planes, count);
    if (made < 0) return report_.NotDone("its sound cannot be turned into the coder's");
    const int kept = av_audio_fifo_write(queue_.get(),
                                         reinterpret_cast<void**>(converted_->extended_data), made);
    return kept == made || report_.NotDone("there is not enough memory");
}

bool SoundEncoder::CodeQueue(bool is_last) {
    const int whole = coder_->frame_size > 0 ? coder_->frame_size : kUsualFrame;
    while (true) {
        const int count = std::min(av_audio_fifo_size(queue_.get()), whole);
        if (count == 0 || (count < whole && !is_last)) return true;
        const FrameHandle frame(av_frame_alloc());
        if (!frame) return report_.NotDone("there is not enough memory");
        frame->format = coder_->sample_fmt;
        frame->nb_samples = count;
        frame->sample_rate = coder_->sample_rate;
        frame->pts = position_;
        if (av_channel_layout_copy(&frame->ch_layout, &coder_->ch_layout) < 0 ||
            av_frame_get_buffer(frame.get(), 0) < 0) {
            return report_.NotDone("there is not enough memory");
        }
        av_audio_fifo_read(queue_.get(), reinterpret_cast<void**>(frame->extended_data), count);
        position_ += count;
        if (!Send(frame.get())) return false;
    }
}

bool SoundEncoder::Add(ByteView samples) {
    const auto count = static_cast<int>(samples.size() / 2 / format_.channels);
    return Convert(samples.data(), count) && CodeQueue(false);
}

bool SoundEncoder::Finish() {
    return Convert(nullptr, 0) && CodeQueue(true) && Send(nullptr);
}

bool SoundEncoder::Send(const AVFrame* frame) {
    int result = avcodec_send_frame(coder_.get(), frame);
    while (result >= 0) {
        result = avcodec_receive_packet(coder_.get(), packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return true;
        if (result < 0) break;
        if (!writer_.Write(packet_.get(), *stream_, coder_->time_base)) return false;
    }
    return report_.NotDone("the sound cannot be coded: " + ErrorText(result));
}

} // namespace kelvo::media_tool
