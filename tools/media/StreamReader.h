#pragma once
// Reads the stream of pictures and sound from standard input, block by block, and believes none of
// it: a block is as long as its kind must be, or the stream is refused.

#include "framework/base/Bytes.h"
#include "tools/media/Report.h"
#include "tools/media_stream/MediaStream.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo::media_tool {

/// What stands before the first image and sample.
struct StreamDescription {
    std::optional<media_stream::PictureFormat> picture = {};
    std::optional<media_stream::SoundFormat> sound = {};
    std::vector<std::pair<std::string, std::string>> texts = {};
};

class StreamReader {
public:
    enum class Event : std::uint8_t { Image, Samples, End, Failed };

    explicit StreamReader(Report& report) : report_(report) {}

    /// @return false after it was reported why not
    bool ReadDescription();
    const StreamDescription& Description() const { return description_; }

    /// The next image, piece of sound, or end.
    Event Next();
    /// After Image: when it is shown, in ticks, and its pixels, top row first.
    const media_stream::ImageHead& Head() const { return head_; }
    ByteView Pixels() const { return pixels_; }
    /// After Samples: whole moments of all channels, 16 bits a sample, little-endian.
    ByteView Samples() const { return samples_; }

private:
    bool ReadExactly(ByteSpan bytes);
    bool ReadHead(media_stream::BlockHead& head);
    bool ReadDescriptionBlock(const media_stream::BlockHead& head);
    bool ReadText(std::uint32_t length);
    bool ReadImage(std::uint32_t length);
    Event ReadSamples();
    bool Refuse() { return report_.NotDone("the stream on standard input is not as it must be"); }

    Report& report_;
    StreamDescription description_;
    media_stream::ImageHead head_;
    std::vector<std::uint8_t> pixels_;
    std::vector<std::uint8_t> samples_;
    std::uint32_t samples_left_ = 0; ///< bytes of the block that is being read
    std::uint64_t first_free_tick_ = 0;
};

} // namespace kelvo::media_tool
