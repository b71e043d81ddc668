#pragma once
// Writes the stream of pictures and sound to standard output. What cannot be written is kept in
// mind until the end.

#include "framework/base/Bytes.h"
#include "tools/media_stream/MediaStream.h"

#include <string_view>
#include <vector>

namespace kelvo::media_tool {

class StreamWriter {
public:
    StreamWriter() { buffer_.reserve(kBufferBytes); }

    void Begin();
    void Picture(const media_stream::PictureFormat& format);
    void Sound(const media_stream::SoundFormat& format);
    /// Leaves out what does not fit the stream: an empty key, or a 0 in it.
    void Text(std::string_view key, std::string_view value);
    void EndDescription();

    void Image(const media_stream::ImageHead& head, ByteView pixels);
    void Samples(ByteView samples);
    /// Hands on what is left. @return false when not everything was taken
    [[nodiscard]] bool End();
    bool Failed() const { return failed_; }

private:
    static constexpr std::size_t kBufferBytes = std::size_t{256} * 1024;

    void Head(std::uint32_t tag, std::size_t length);
    void Append(ByteView bytes);
    void Write(ByteView bytes);
    void Flush();

    std::vector<std::uint8_t> buffer_;
    bool failed_ = false;
};

} // namespace kelvo::media_tool
