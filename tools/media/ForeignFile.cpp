#include "tools/media/ForeignFile.h"

#include "tools/media/DamageLog.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kelvo::media_tool {

namespace {

constexpr int kBufferBytes = 64 * 1024;
constexpr std::int64_t kMostPixels = 100'000'000; ///< of one image
constexpr std::size_t kLargestPiece = std::size_t{1} << 30U;
constexpr rlim_t kMostData = rlim_t{3} << 30U; ///< of the process
/// Packets in a row that cannot be read: behind so many nothing comes any more.
constexpr int kMostFailures = 100;

} // namespace

void LimitMemory() {
    av_max_alloc(kLargestPiece);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // Sanitizers map far more than they use.
    rlimit limit{};
    if (::getrlimit(RLIMIT_DATA, &limit) == 0 && limit.rlim_cur > kMostData) {
        limit.rlim_cur = kMostData;
        ::setrlimit(RLIMIT_DATA, &limit);
    }
#endif
}

ForeignFile::~ForeignFile() {
    coder_.reset();
    avformat_close_input(&context_);
    if (io_ != nullptr) {
        av_freep(&io_->buffer);
        avio_context_free(&io_);
    }
    if (file_ >= 0) ::close(file_);
}

int ForeignFile::ReadPiece(void* self, std::uint8_t* bytes, int count) {
    const int file = static_cast<ForeignFile*>(self)->file_;
    while (StopSignal() == 0) {
        const ssize_t got = ::read(file, bytes, static_cast<std::size_t>(count));
        if (got > 0) return static_cast<int>(got);
        if (got == 0) return AVERROR_EOF;
        if (errno != EINTR) return AVERROR(errno);
    }
    return AVERROR_EXIT;
}

std::int64_t ForeignFile::Seek(void* self, std::int64_t offset, int whence) {
    const int file = static_cast<ForeignFile*>(self)->file_;
    if (whence == AVSEEK_SIZE) {
        struct stat status{};
        return ::fstat(file, &status) == 0 ? status.st_size : AVERROR(errno);
    }
    const off_t place = ::lseek(file, offset, whence & ~AVSEEK_FORCE);
    return place >= 0 ? place : AVERROR(errno);
}

int ForeignFile::RefuseOpening(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EACCES);
}

bool ForeignFile::Open(const std::string& name) {
    file_ = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status{};
    if (file_ < 0 || ::fstat(file_, &status) != 0) {
        return report_.NotDone(errno == ENOENT
                                   ? "there is no such file"
                                   : std::string("it cannot be read: ") + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) return report_.NotDone("it is no file");
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    if (buffer != nullptr) {
        io_ = avio_alloc_context(buffer, kBufferBytes, 0, this, ReadPiece, nullptr, Seek);
    }
    context_ = avformat_alloc_context();
    packet_.reset(av_packet_alloc());
    frame_.reset(av_frame_alloc());
    if (io_ == nullptr || context_ == nullptr || !packet_ || !frame_) {
        return report_.NotDone("there is not enough memory");
    }
    context_->pb = io_;
    context_->flags |= AVFMT_FLAG_CUSTOM_IO;
    context_->io_open = RefuseOpening;
    context_->interrupt_callback.callback = [](void*) { return StopSignal() != 0 ? 1 : 0; };
    context_->error_recognition = AV_EF_CRCCHECK;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "none", 0);
    // The name is only a hint of the kind, and must not be taken for an address.
    int result = avformat_open_input(&context_, "", nullptr, &options);
    av_dict_free(&options);
    if (result >= 0) {
        // What is estimated below is no claim.
        for (unsigned i = 0; i < context_->nb_streams; ++i)
            durations_.push_back(context_->streams[i]->duration);
        result = avformat_find_stream_info(context_, nullptr);
    }
    ForgetLog();
    if (StopSignal() != 0) return false;
    if (result >= 0) return true;
    return report_.NotDone(result == AVERROR_INVALIDDATA || result == AVERROR_EOF
                               ? "it is no film and no sound that FFmpeg's libraries know"
                               : "it cannot be read: " + ErrorText(result));
}

bool ForeignFile::Choose(AVMediaType type) {
    const AVCodec* codec = nullptr;
    const int number = av_find_best_stream(context_, type, -1, -1, &codec, 0);
    if (number == AVERROR_DECODER_NOT_FOUND) {
        return report_.NotDone(fmt::format("FFmpeg's libraries cannot decode its {}",
                                           type == AVMEDIA_TYPE_VIDEO ? "picture" : "sound"));
    }
    if (number < 0) return false;
    stream_ = context_->streams[number];
    // The cover of a record is no film.
    if ((stream_->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) return false;
    for (unsigned i = 0; i < context_->nb_streams; ++i) {
        if (static_cast<int>(i) != number) context_->streams[i]->discard = AVDISCARD_ALL;
    }
    coder_.reset(avcodec_alloc_context3(codec));
    if (!coder_ || avcodec_parameters_to_context(coder_.get(), stream_->codecpar) < 0) {
        return report_.NotDone("there is not enough memory");
    }
    coder_->pkt_timebase = stream_->time_base;
    coder_->max_pixels = kMostPixels;
    coder_->thread_count = 0;
    coder_->err_recognition = AV_EF_CRCCHECK;
    const int result = avcodec_open2(coder_.get(), codec, nullptr);
    if (result < 0) {
        return report_.NotDone(fmt::format("its {} cannot be decoded: {}",
                                           type == AVMEDIA_TYPE_VIDEO ? "picture" : "sound",
                                           ErrorText(result)));
    }
    if (context_->start_time != AV_NOPTS_VALUE) {
        start_ = av_rescale_q(context_->start_time, {1, AV_TIME_BASE}, stream_->time_base);
    }
    return true;
}

double ForeignFile::Duration() const {
    // A duration that follows from the size and a rate is no claim of the file.
    const bool is_claim = context_->duration != AV_NOPTS_VALUE && context_->duration > 0 &&
                          context_->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE;
    return is_claim ? static_cast<double>(context_->duration) / AV_TIME_BASE : 0;
}

double ForeignFile::OwnDuration() const {
    const auto number = static_cast<std::size_t>(stream_->index);
    if (number >= durations_.size() || durations_[number] == AV_NOPTS_VALUE) return 0;
    return static_cast<double>(durations_[number]) * av_q2d(stream_->time_base);
}

bool ForeignFile::ReadPacket() {
    for (int failures = 0; failures < kMostFailures && StopSignal() == 0; ++failures) {
        av_packet_unref(packet_.get());
        const int result = av_read_frame(context_, packet_.get());
        if (result == AVERROR_EOF) return false;
        if (result >= 0) {
            if (packet_->stream_index == stream_->index) return true;
            failures = -1;
            continue;
        }
        if (result == AVERROR(EAGAIN)) continue;
        if (StopSignal() == 0) report_.Damaged("it cannot be read on: " + ErrorText(result));
        if (result != AVERROR_INVALIDDATA) return false;
    }
    return false;
}

void ForeignFile::Feed() {
    if (!ReadPacket()) {
        at_end_ = true;
        avcodec_send_packet(coder_.get(), nullptr);
        return;
    }
    if ((packet_->flags & AV_PKT_FLAG_CORRUPT) != 0) report_.Damaged("a part of it is damaged");
    const int result = avcodec_send_packet(coder_.get(), packet_.get());
    if (result < 0 && result != AVERROR(EAGAIN) && result != AVERROR_EOF) {
        report_.Damaged("a part of it cannot be decoded: " + ErrorText(result));
    }
}

bool ForeignFile::IsSound(const AVFrame& frame) {
    if (coder_->codec_type == AVMEDIA_TYPE_VIDEO) {
        return frame.width > 0 && frame.height > 0 &&
               std::int64_t{frame.width} * frame.height <= kMostPixels;
    }
    return frame.nb_samples > 0 && frame.sample_rate > 0 && frame.ch_layout.nb_channels > 0;
}

const AVFrame* ForeignFile::NextFrame() {
    while (StopSignal() == 0) {
        const int result = avcodec_receive_frame(coder_.get(), frame_.get());
        ReportLog(report_);
        if (result == AVERROR(EAGAIN) && !at_end_) {
            Feed();
            continue;
        }
        if (result == AVERROR_EOF || result == AVERROR(EAGAIN)) return nullptr;
        if (result < 0) {
            report_.Damaged("a part of it cannot be decoded: " + ErrorText(result));
            if (at_end_) return nullptr;
            Feed();
            continue;
        }
        if (!IsSound(*frame_)) continue;
        if (frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT) != 0) {
            report_.Damaged("an image or a piece of sound is damaged");
        }
        const std::int64_t time = frame_->best_effort_timestamp;
        frame_->pts = time == AV_NOPTS_VALUE ? AV_NOPTS_VALUE : time - start_;
        return frame_.get();
    }
    return nullptr;
}

} // namespace kelvo::media_tool
