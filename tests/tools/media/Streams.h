#pragma once
// Streams of pictures and sound for the tests of kelvotool-media, and the program run on them.

#include "tests/tools/kelvotool/ToolRun.h"
#include "tools/media_stream/MediaStream.h"

#include <optional>
#include <string>
#include <vector>

namespace kelvo::test {

struct StreamImage {
    std::uint64_t start = 0;
    std::uint32_t duration = 1;
    Bytes pixels = {};
    friend bool operator==(const StreamImage&, const StreamImage&) = default;
};

/// A whole stream, as a test makes or reads it.
struct MediaStream {
    std::optional<media_stream::PictureFormat> picture = {};
    std::optional<media_stream::SoundFormat> sound = {};
    std::vector<std::pair<std::string, std::string>> texts = {};
    std::vector<StreamImage> images = {};
    std::vector<std::int16_t> samples = {};
    bool has_end = false; ///< after reading
};

Bytes BytesOf(const MediaStream& stream);
/// Fails the test when the bytes are no stream; one without its end is kept as far as it goes.
MediaStream ParseStream(const std::string& bytes);

/// Images that move, of colours of five bits a channel; none looks like another.
MediaStream TestFilm(std::uint32_t width, std::uint32_t height, std::size_t images,
                     std::uint32_t rate);
/// Adds noise of the film's length.
void AddSound(MediaStream& stream, std::uint32_t sample_rate, double seconds);

/// kelvotool-media encode, with the bytes as standard input.
ToolResult Encode(const ToolFolder& folder, const Bytes& stream, std::vector<std::string> arguments,
                  ToolCircumstances circumstances = {});
ToolResult Decode(const std::vector<std::string>& arguments);
/// ffmpeg by itself, which must succeed.
void Ffmpeg(const std::vector<std::string>& arguments);

} // namespace kelvo::test
