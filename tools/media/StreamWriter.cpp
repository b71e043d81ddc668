#include "tools/media/StreamWriter.h"

#include "tools/media/Report.h"

#include <unistd.h>

#include <cerrno>

namespace kelvo::media_tool {

using namespace media_stream;

namespace {

ByteView BytesOfText(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace

void StreamWriter::Begin() {
    constexpr std::uint8_t kVersionBytes[] = {kVersion, 0, 0, 0};
    Head(kStart, sizeof(kVersionBytes));
    Append(kVersionBytes);
}

void StreamWriter::Picture(const PictureFormat& format) {
    Head(kPicture, PictureFormat::kBytes);
    Append(BytesOf(format));
}

void StreamWriter::Sound(const SoundFormat& format) {
    Head(media_stream::kSound, SoundFormat::kBytes);
    Append(BytesOf(format));
}

void StreamWriter::Text(std::string_view key, std::string_view value) {
    constexpr std::size_t kLongest = 4096;
    if (key.empty() || key.size() > kLongest || value.size() > kLongest) return;
    Head(kText, key.size() + 1 + value.size());
    Append(BytesOfText(key));
    Append(std::array<std::uint8_t, 1>{0});
    Append(BytesOfText(value));
}

void StreamWriter::EndDescription() {
    Head(kData, 0);
    // Who only wants to know what the file is need not wait for its first image.
    Flush();
}

void StreamWriter::Image(const ImageHead& head, ByteView pixels) {
    Head(kImage, ImageHead::kBytes + pixels.size());
    Append(BytesOf(head));
    Append(pixels);
}

void StreamWriter::Samples(ByteView samples) {
    Head(kSamples, samples.size());
    Append(samples);
}

bool StreamWriter::End() {
    Head(kEnd, 0);
    Flush();
    // Only closing tells of what a file system noticed late.
    const int copy = ::dup(STDOUT_FILENO);
    if (copy >= 0 && ::close(copy) != 0) failed_ = true;
    return !failed_;
}

void StreamWriter::Head(std::uint32_t tag, std::size_t length) {
    Append(BytesOf(BlockHead{tag, static_cast<std::uint32_t>(length)}));
}

void StreamWriter::Append(ByteView bytes) {
    if (bytes.size() > kBufferBytes - buffer_.size()) Flush();
    if (bytes.size() > kBufferBytes) {
        Write(bytes);
    } else {
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    }
}

void StreamWriter::Flush() {
    Write(buffer_);
    buffer_.clear();
}

void StreamWriter::Write(ByteView bytes) {
    while (!bytes.empty() && !failed_) {
        const ssize_t count = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (count < 0) {
            failed_ = errno != EINTR || StopSignal() != 0;
        } else {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
    }
}

} // namespace kelvo::media_tool
