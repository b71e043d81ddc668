#include "tools/media/SoundSource.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

namespace kelvo::media_tool {

namespace {

constexpr double kTolerance = 0.05; ///< seconds; times in some files are rounded to milliseconds
constexpr double kLongestHole = 3600;
constexpr unsigned kPiecesASecond = 10;
constexpr int kHighestRate = 768'000;

std::uint32_t BitsOf(const AVStream& stream) {
    const AVDictionaryEntry* const said =
        av_dict_get(stream.metadata, "SIGNIFICANT_BITS", nullptr, 0);
    if (said != nullptr && std::string_view(said->value) == "8") return 8;
    const auto format = static_cast<AVSampleFormat>(stream.codecpar->format);
    return format == AV_SAMPLE_FMT_U8 || format == AV_SAMPLE_FMT_U8P ? 8 : 16;
}

} // namespace

bool SoundSource::Open(const std::string& name, const SoundWishes& wishes) {
    if (!file_.Open(name) || !file_.Choose(AVMEDIA_TYPE_AUDIO)) return false;
    const AVCodecParameters& parameters = *file_.Stream().codecpar;
    const int rate = wishes.sample_rate != 0 ? wishes.sample_rate : parameters.sample_rate;
    const int channels = wishes.channels != 0 ? wishes.channels : parameters.ch_layout.nb_channels;
    if (rate <= 0 || rate > kHighestRate || channels <= 0 ||
        channels > static_cast<int>(media_stream::kMostChannels)) {
        return report_.NotDone("its sound has no rate or no channels, or too many");
    }
    format_.sample_rate = static_cast<std::uint32_t>(rate);
    format_.channels = static_cast<std::uint32_t>(channels);
    format_.significant_bits = BitsOf(file_.Stream());
    if (const double seconds = file_.Duration(); seconds > 0 && seconds < 1e9) {
        format_.count = static_cast<std::uint64_t>(std::llround(seconds * rate));
    }
    if (channels == parameters.ch_layout.nb_channels) {
        av_channel_layout_copy(&layout_, &parameters.ch_layout);
    } else {
        av_channel_layout_default(&layout_, channels);
    }
    return true;
}

bool SoundSource::SetUpConversion(const AVFrame& frame) {
    if (frame.format == frame_format_ && frame.sample_rate == frame_rate_ &&
        frame.ch_layout.nb_channels == frame_channels_) {
        return true;
    }
    if (resampler_ && !Convert(nullptr)) return false; // what it still holds
    AVChannelLayout layout{};
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
        av_channel_layout_default(&layout, frame.ch_layout.nb_channels);
    } else {
        av_channel_layout_copy(&layout, &frame.ch_layout);
    }
    if (layout_.order == AV_CHANNEL_ORDER_UNSPEC) {
        av_channel_layout_default(&layout_, layout_.nb_channels);
    }
    SwrContext* resampler = nullptr;
    const int result = swr_alloc_set_opts2(
        &resampler, &layout_, AV_SAMPLE_FMT_S16, static_cast<int>(format_.sample_rate), &layout,
        static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    av_channel_layout_uninit(&layout);
    resampler_.reset(resampler);
    if (result < 0 || swr_init(resampler) < 0) {
        report_.Damaged("its sound changes into something that nobody can turn into samples");
        return false;
    }
    frame_format_ = frame.format;
    frame_rate_ = frame.sample_rate;
    frame_channels_ = frame.ch_layout.nb_channels;
    return true;
}

bool SoundSource::Convert(const AVFrame* frame) {
    const int count = frame == nullptr ? 0 : frame->nb_samples;
    const int room = swr_get_out_samples(resampler_.get(), count);
    if (room <= 0) return true;
    const std::size_t before = ready_.size();
    ready_.resize(before + static_cast<std::size_t>(room) * MomentBytes());
    std::uint8_t* planes[] = {ready_.data() + before};
    const int made = swr_convert(
        resampler_.get(), planes, room,
        frame == nullptr ? nullptr : const_cast<const std::uint8_t**>(frame->extended_data), count);
    ready_.resize(before + static_cast<std::size_t>(std::max(made, 0)) * MomentBytes());
    if (made < 0) report_.Damaged("a piece of sound cannot be turned into samples");
    return made >= 0;
}

std::int64_t SoundSource::Settle(const AVFrame& frame) {
    if (frame.pts == AV_NOPTS_VALUE) return 0;
    const auto rate = static_cast<int>(format_.sample_rate);
    const std::int64_t place = av_rescale_q(frame.pts, file_.Stream().time_base, {1, rate});
    // What the resampler holds back is on its way.
    const std::int64_t held = resampler_ ? swr_get_delay(resampler_.get(), rate) : 0;
    const std::int64_t off = place - static_cast<std::int64_t>(moments_) - held;
    const double seconds = static_cast<double>(off) / rate;
    if (std::abs(seconds) <= kTolerance) return 0;
    if (std::abs(seconds) > kLongestHole) {
        report_.Damaged("its sound jumps in time");
        return 0;
    }
    if (off > 0) {
        to_fill_ = off;
        return 0;
    }
    return -off;
}

bool SoundSource::ReadFrame() {
    const AVFrame* const frame = file_.NextFrame();
    if (frame == nullptr) {
        at_end_ = true;
        if (resampler_) Convert(nullptr);
        moments_ += ready_.size() / MomentBytes();
        return !ready_.empty();
    }
    if (!SetUpConversion(*frame)) return true;
    const std::int64_t overlap = Settle(*frame);
    Convert(frame);
    const auto drop = std::min(ready_.size(), static_cast<std::size_t>(overlap) * MomentBytes());
    ready_.erase(ready_.begin(), ready_.begin() + static_cast<std::ptrdiff_t>(drop));
    moments_ += ready_.size() / MomentBytes();
    return true;
}

bool SoundSource::Advance() {
    piece_moment_ += piece_.size() / MomentBytes();
    piece_ = {};
    while (to_fill_ == 0 && next_ == ready_.size()) {
        if (at_end_) return false;
        ready_.clear();
        next_ = 0;
        if (!ReadFrame()) return false;
    }
    const std::size_t most = std::max(format_.sample_rate / kPiecesASecond, 1U);
    if (to_fill_ > 0) {
        // The frame that was read waits behind it.
        const std::size_t count = std::min(static_cast<std::size_t>(to_fill_), most);
        to_fill_ -= static_cast<std::int64_t>(count);
        moments_ += count;
        silence_.resize(count * MomentBytes());
        piece_ = silence_;
        return true;
    }
    piece_ = ByteView(ready_).subspan(next_, std::min(most * MomentBytes(), ready_.size() - next_));
    next_ += piece_.size();
    return true;
}

double SoundSource::Time() const {
    return static_cast<double>(piece_moment_) / format_.sample_rate;
}

} // namespace kelvo::media_tool
