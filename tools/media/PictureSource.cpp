#include "tools/media/PictureSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace kelvo::media_tool {

namespace {

constexpr double kLongestStill = 3600; ///< seconds; a longer one is no image but damage
constexpr int kQuarters = 4;

/// How the file wants its images turned, in quarters clockwise.
int TurnsOf(const AVStream& stream) {
    std::size_t size = 0;
    const std::uint8_t* const matrix =
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (matrix == nullptr || size < 9 * sizeof(std::int32_t)) return 0;
    const double angle = -av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
    if (!std::isfinite(angle)) return 0;
    return (static_cast<int>(std::lround(angle / 90)) % kQuarters + kQuarters) % kQuarters;
}

bool IsConstant(const AVStream& stream) {
    const AVRational average = stream.avg_frame_rate;
    return average.num > 0 && average.den > 0 && av_cmp_q(average, stream.r_frame_rate) == 0;
}

std::uint32_t BitsOf(const AVStream& stream) {
    const AVDictionaryEntry* const said =
        av_dict_get(stream.metadata, "SIGNIFICANT_BITS", nullptr, 0);
    if (said != nullptr && std::string_view(said->value) == "5") return 5;
    switch (stream.codecpar->format) {
    case AV_PIX_FMT_RGB555LE:
    case AV_PIX_FMT_RGB555BE:
    case AV_PIX_FMT_BGR555LE:
    case AV_PIX_FMT_BGR555BE:
        return 5;
    default:
        return 8;
    }
}

} // namespace

bool PictureSource::Open(const std::string& name, const PictureWishes& wishes) {
    if (!file_.Open(name) || !file_.Choose(AVMEDIA_TYPE_VIDEO)) return false;
    turns_ = TurnsOf(file_.Stream());
    flat_.reset(av_frame_alloc());
    if (!flat_ || !ChooseSize(wishes) || !ChooseTicks(wishes)) return false;
    format_.significant_bits = BitsOf(file_.Stream());
    flat_->format = AV_PIX_FMT_RGB24;
    const bool lies = turns_ % 2 != 0;
    flat_->width = static_cast<int>(lies ? format_.height : format_.width);
    flat_->height = static_cast<int>(lies ? format_.width : format_.height);
    if (av_frame_get_buffer(flat_.get(), 0) < 0) {
        return report_.NotDone("there is not enough memory");
    }
    pixels_.resize(format_.ImageBytes());
    return true;
}

bool PictureSource::ChooseSize(const PictureWishes& wishes) {
    double width = file_.Stream().codecpar->width;
    double height = file_.Stream().codecpar->height;
    // Pixels that are not square become so.
    const AVRational shape = file_.Stream().sample_aspect_ratio.num != 0
                                 ? file_.Stream().sample_aspect_ratio
                                 : file_.Stream().codecpar->sample_aspect_ratio;
    if (shape.num > 0 && shape.den > 0) width *= av_q2d(shape);
    if (turns_ % 2 != 0) std::swap(width, height);
    if (wishes.width != 0) width = wishes.width;
    if (wishes.height != 0) height = wishes.height;
    width = std::max(std::round(width), 1.0);
    height = std::max(std::round(height), 1.0);
    constexpr double kMostPixels = 100e6;
    if (width > media_stream::kLargestSide || height > media_stream::kLargestSide ||
        width * height > kMostPixels || file_.Stream().codecpar->width <= 0) {
        return report_.NotDone("its images have no size, or are too large");
    }
    format_.width = static_cast<std::uint32_t>(width);
    format_.height = static_cast<std::uint32_t>(height);
    return true;
}

bool PictureSource::ChooseTicks(const PictureWishes& wishes) {
    const AVStream& stream = file_.Stream();
    repeats_ = wishes.rate.has_value();
    AVRational rate = wishes.rate          ? *wishes.rate
                      : IsConstant(stream) ? stream.avg_frame_rate
                                           : av_inv_q(stream.time_base);
    if (rate.num <= 0 || rate.den <= 0) rate = {1000, 1};
    tick_ = av_inv_q(rate);
    format_.ticks_numerator = static_cast<std::uint32_t>(rate.num);
    format_.ticks_denominator = static_cast<std::uint32_t>(rate.den);
    const double seconds = file_.Duration();
    if (repeats_ && seconds > 0 && seconds * av_q2d(rate) < 1e12) {
        format_.count = static_cast<std::uint64_t>(std::llround(seconds * av_q2d(rate)));
    } else if (!repeats_ && stream.nb_frames > 0) {
        format_.count = static_cast<std::uint64_t>(stream.nb_frames);
    }
    return true;
}

bool PictureSource::ReadAhead() {
    ahead_ = file_.NextFrame();
    if (ahead_ == nullptr) return false;
    const std::int64_t expected = has_begun_ ? ahead_tick_ + last_length_ : 0;
    std::int64_t tick = expected;
    if (ahead_->pts != AV_NOPTS_VALUE) {
        tick = av_rescale_q(ahead_->pts, file_.Stream().time_base, tick_);
    }
    const double seconds = static_cast<double>(tick - expected) * av_q2d(tick_);
    if (std::abs(seconds) > kLongestStill) {
        report_.Damaged("its images jump in time");
        tick = expected;
    }
    ahead_tick_ = std::max<std::int64_t>(tick, 0);
    const std::int64_t length =
        ahead_->pkt_duration > 0
            ? av_rescale_q(ahead_->pkt_duration, file_.Stream().time_base, tick_)
            : 1;
    const auto longest = static_cast<std::int64_t>(kLongestStill / av_q2d(tick_)) + 1;
    last_length_ = std::clamp<std::int64_t>(length, 1, std::min<std::int64_t>(longest, INT_MAX));
    return true;
}

void PictureSource::Turn(const AVFrame& flat) {
    const std::size_t width = format_.width;
    const std::size_t height = format_.height;
    const auto pixel = [&flat](std::size_t x, std::size_t y) {
        return flat.data[0] + static_cast<std::ptrdiff_t>(y) * flat.linesize[0] + x * 3;
    };
    if (turns_ == 0) {
        for (std::size_t y = 0; y < height; ++y)
            std::copy_n(pixel(0, y), width * 3, pixels_.data() + y * width * 3);
        return;
    }
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const std::uint8_t* const from = turns_ == 1   ? pixel(y, width - 1 - x)
                                             : turns_ == 2 ? pixel(width - 1 - x, height - 1 - y)
                                                           : pixel(height - 1 - y, x);
            std::copy_n(from, 3, pixels_.data() + (y * width + x) * 3);
        }
    }
}

bool PictureSource::Convert() {
    const AVFrame& frame = *ahead_;
    const auto format = static_cast<AVPixelFormat>(frame.format);
    scaler_.reset(sws_getCachedContext(
        scaler_.release(), frame.width, frame.height, format, flat_->width, flat_->height,
        AV_PIX_FMT_RGB24, SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP,
        nullptr, nullptr, nullptr));
    if (!scaler_) {
        report_.Damaged("an image has pixels that nobody can turn into red, green and blue");
        return false;
    }
    constexpr int kHighDefinition = 720;
    const int space = frame.colorspace != AVCOL_SPC_UNSPECIFIED ? static_cast<int>(frame.colorspace)
                      : frame.height >= kHighDefinition         ? static_cast<int>(AVCOL_SPC_BT709)
                                                        : static_cast<int>(AVCOL_SPC_SMPTE170M);
    constexpr int kOne = 1 << 16;
    // Without effect, and refused, where the image is red, green and blue already.
    sws_setColorspaceDetails(scaler_.get(), sws_getCoefficients(space),
                             frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, kOne, kOne);
    if (sws_scale(scaler_.get(), frame.data, frame.linesize, 0, frame.height, flat_->data,
                  flat_->linesize) != flat_->height) {
        report_.Damaged("an image cannot be turned into red, green and blue");
        return false;
    }
    Turn(*flat_);
    return true;
}

bool PictureSource::Advance() {
    if (!has_begun_) {
        if (!ReadAhead()) return false;
        has_begun_ = true;
        // At a given rate the first image also stands for what lies before it.
        if (repeats_) ahead_tick_ = 0;
    } else if (repeats_ && static_cast<std::int64_t>(head_.start) + 1 < shown_until_) {
        ++head_.start;
        return true;
    } else if (ahead_ == nullptr) {
        return false;
    }
    while (true) {
        const std::int64_t start = std::max(ahead_tick_, shown_until_);
        const std::int64_t length = last_length_;
        const bool is_good = Convert();
        const bool more = ReadAhead();
        const std::int64_t end = more ? ahead_tick_ : start + length;
        // Of two images for one tick the later one is shown.
        if (more && (end <= start || !is_good)) continue;
        if (!is_good) return false;
        head_.start = static_cast<std::uint64_t>(start);
        head_.duration = repeats_ ? 1
                                  : static_cast<std::uint32_t>(std::clamp<std::int64_t>(
                                        end - start, 1, std::numeric_limits<std::uint32_t>::max()));
        shown_until_ = std::max(end, start + 1);
        return true;
    }
}

double PictureSource::Time() const {
    return static_cast<double>(head_.start) * av_q2d(tick_);
}

double PictureSource::EndTime() const {
    return (static_cast<double>(head_.start) + head_.duration) * av_q2d(tick_);
}

} // namespace kelvo::media_tool
