#include "tools/media/MediaWriter.h"

#include <fmt/format.h>

#include <cstdio>

namespace kelvo::media_tool {

namespace {

constexpr int kBufferBytes = 256 * 1024;

} // namespace

MediaWriter::~MediaWriter() {
    if (context_ == nullptr) return;
    if (context_->pb != nullptr) {
        av_freep(&context_->pb->buffer);
        avio_context_free(&context_->pb);
    }
    avformat_free_context(context_);
}

int MediaWriter::WritePiece(void* self, std::uint8_t* bytes, int count) {
    auto& writer = *static_cast<MediaWriter*>(self);
    const auto size = static_cast<std::size_t>(count);
    if (!writer.file_.WriteAt(writer.position_, {bytes, size})) {
        writer.disk_failed_ = true;
        return AVERROR(EIO);
    }
    writer.position_ += size;
    return count;
}

std::int64_t MediaWriter::Seek(void* self, std::int64_t offset, int whence) {
    auto& writer = *static_cast<MediaWriter*>(self);
    const auto size = static_cast<std::int64_t>(writer.file_.Size());
    if (whence == AVSEEK_SIZE) return size;
    const std::int64_t from = whence == SEEK_CUR   ? static_cast<std::int64_t>(writer.position_)
                              : whence == SEEK_END ? size
                                                   : 0;
    if (from + offset < 0) return AVERROR(EINVAL);
    writer.position_ = static_cast<std::uint64_t>(from + offset);
    return from + offset;
}

bool MediaWriter::Open(const std::string& name, const char* muxer) {
    name_ = name;
    const std::string temporary = name + ".tmp";
    switch (file_.Make(temporary)) {
    case platform::Claim::Taken:
        break;
    case platform::Claim::Busy:
        return report_.NotDone("another program is writing it");
    case platform::Claim::Foreign:
        return report_.NotDone(fmt::format("the file {} is in the way", temporary));
    case platform::Claim::Failed:
        return report_.NotDone("it cannot be written");
    }
    if (!Check(avformat_alloc_output_context2(&context_, nullptr, muxer, nullptr))) return false;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    context_->pb = buffer == nullptr ? nullptr
                                     : avio_alloc_context(buffer, kBufferBytes, 1, this, nullptr,
                                                          WritePiece, Seek);
    if (context_->pb == nullptr) return report_.NotDone("there is not enough memory");
    context_->flags |= AVFMT_FLAG_CUSTOM_IO;
    return true;
}

AVStream* MediaWriter::AddStream() {
    return avformat_new_stream(context_, nullptr);
}

void MediaWriter::Describe(const std::string& key, const std::string& value) {
    av_dict_set(&context_->metadata, key.c_str(), value.c_str(), 0);
}

bool MediaWriter::Check(int result) {
    if (result >= 0 && !disk_failed_) return true;
    return report_.NotDone(disk_failed_ ? "it cannot be written" : ErrorText(result));
}

bool MediaWriter::Begin() {
    return Check(avformat_write_header(context_, nullptr));
}

bool MediaWriter::Write(AVPacket* packet, const AVStream& stream, AVRational time_base) {
    packet->stream_index = stream.index;
    av_packet_rescale_ts(packet, time_base, stream.time_base);
    return Check(av_interleaved_write_frame(context_, packet));
}

bool MediaWriter::Finish(bool replace) {
    if (!Check(av_write_trailer(context_))) return false;
    avio_flush(context_->pb);
    if (!Check(context_->pb->error)) return false;
    const bool finished = file_.Finish(replace ? name_ : std::string{});
    if (StopSignal() == 0 && finished &&
        (replace ? file_.PutInPlaceOf(name_) : file_.PutAt(name_))) {
        return true;
    }
    file_.Discard();
    if (StopSignal() != 0) return false;
    return report_.NotDone(finished ? "it cannot be put in its place" : "it cannot be written");
}

} // namespace kelvo::media_tool
