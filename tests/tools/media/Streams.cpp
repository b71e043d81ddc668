#include "tests/tools/media/Streams.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace kelvo::test {

using namespace media_stream;

namespace {

void Append(Bytes& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void AppendHead(Bytes& bytes, std::uint32_t tag, std::size_t length) {
    Append(bytes, media_stream::BytesOf(BlockHead{tag, static_cast<std::uint32_t>(length)}));
}

void AppendSamples(Bytes& bytes, std::span<const std::int16_t> samples) {
    AppendHead(bytes, kSamples, samples.size() * 2);
    for (const std::int16_t sample : samples) {
        bytes.push_back(static_cast<std::uint8_t>(sample & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(sample >> 8 & 0xFF));
    }
}

void AppendDescription(Bytes& bytes, const MediaStream& stream) {
    AppendHead(bytes, kStart, 4);
    Append(bytes, Bytes{1, 0, 0, 0});
    if (stream.picture) {
        AppendHead(bytes, kPicture, PictureFormat::kBytes);
        Append(bytes, media_stream::BytesOf(*stream.picture));
    }
    if (stream.sound) {
        AppendHead(bytes, media_stream::kSound, SoundFormat::kBytes);
        Append(bytes, media_stream::BytesOf(*stream.sound));
    }
    for (const auto& [key, value] : stream.texts) {
        AppendHead(bytes, kText, key.size() + 1 + value.size());
        const std::string text = key + '\0' + value;
        bytes.insert(bytes.end(), text.begin(), text.end());
    }
    AppendHead(bytes, kData, 0);
}

/// Takes one block into the stream. @return false when it does not belong there
bool Take(MediaStream& stream, std::uint32_t tag, ByteView block) {
    if (tag == kStart) return block.size() == 4 && block[0] == kVersion;
    if (tag == kPicture) {
        stream.picture = ParsePicture(block).Value();
    } else if (tag == media_stream::kSound) {
        stream.sound = ParseSound(block).Value();
    } else if (tag == kText) {
        const auto* const end = std::find(block.data(), block.data() + block.size(), 0);
        stream.texts.emplace_back(std::string(block.data(), end),
                                  std::string(end + 1, block.data() + block.size()));
    } else if (tag == kImage) {
        const ImageHead head = ParseImageHead(block).Value();
        const ByteView pixels = block.subspan(ImageHead::kBytes);
        stream.images.push_back({head.start, head.duration, Bytes(pixels.begin(), pixels.end())});
        return pixels.size() == stream.picture->ImageBytes();
    } else if (tag == kSamples) {
        for (std::size_t i = 0; i + 1 < block.size(); i += 2)
            stream.samples.push_back(static_cast<std::int16_t>(block[i] | block[i + 1] << 8));
    } else if (tag == kEnd) {
        stream.has_end = true;
    } else {
        return tag == kData;
    }
    return true;
}

} // namespace

Bytes BytesOf(const MediaStream& stream) {
    Bytes bytes;
    AppendDescription(bytes, stream);
    std::size_t sample = 0;
    const std::span<const std::int16_t> samples(stream.samples);
    for (const StreamImage& image : stream.images) {
        // The sound of a fifth of a second ahead.
        if (stream.sound) {
            const double time = static_cast<double>(image.start) *
                                stream.picture->ticks_denominator / stream.picture->ticks_numerator;
            const auto until = std::min(
                samples.size(), static_cast<std::size_t>((time + 0.2) * stream.sound->sample_rate) *
                                    stream.sound->channels);
            if (until > sample) AppendSamples(bytes, samples.subspan(sample, until - sample));
            sample = std::max(sample, until);
        }
        AppendHead(bytes, kImage, ImageHead::kBytes + image.pixels.size());
        Append(bytes, media_stream::BytesOf(ImageHead{image.start, image.duration}));
        Append(bytes, image.pixels);
    }
    if (sample < samples.size()) AppendSamples(bytes, samples.subspan(sample));
    AppendHead(bytes, kEnd, 0);
    return bytes;
}

MediaStream ParseStream(const std::string& text) {
    MediaStream stream;
    ByteView rest(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    while (rest.size() >= BlockHead::kBytes) {
        const auto head = ParseBlockHead(rest);
        if (!head || head.Value().length > rest.size() - BlockHead::kBytes) break;
        const ByteView block = rest.subspan(BlockHead::kBytes, head.Value().length);
        if (!Take(stream, head.Value().tag, block)) {
            ADD_FAILURE() << "a block that does not belong there";
            break;
        }
        rest = rest.subspan(BlockHead::kBytes + block.size());
    }
    EXPECT_TRUE(!stream.has_end || rest.empty()) << "something follows the end";
    return stream;
}

MediaStream TestFilm(std::uint32_t width, std::uint32_t height, std::size_t images,
                     std::uint32_t rate) {
    MediaStream stream;
    stream.picture = PictureFormat{width, height, rate, 1, 5, images};
    for (std::size_t n = 0; n < images; ++n) {
        StreamImage image{n, 1, {}};
        for (std::uint32_t y = 0; y < height; ++y) {
            for (std::uint32_t x = 0; x < width; ++x) {
                // All channels take all of their values in a picture that is large enough.
                const auto t = static_cast<std::uint32_t>(n);
                for (const std::uint32_t value : {x + t, y + t * 3, (x * y) / 7 + t}) {
                    const std::uint32_t bits = value & 31U;
                    image.pixels.push_back(static_cast<std::uint8_t>(bits << 3U | bits >> 2U));
                }
            }
        }
        stream.images.push_back(std::move(image));
    }
    return stream;
}

void AddSound(MediaStream& stream, std::uint32_t sample_rate, double seconds) {
    stream.sound = SoundFormat{sample_rate, 1, 16, 0};
    std::minstd_rand random(7);
    const auto count = static_cast<std::size_t>(sample_rate * seconds);
    for (std::size_t i = 0; i < count; ++i)
        stream.samples.push_back(static_cast<std::int16_t>(random() % 65536 - 32768));
}

ToolResult Encode(const ToolFolder& folder, const Bytes& stream, std::vector<std::string> arguments,
                  ToolCircumstances circumstances) {
    WriteFile(folder.Path("stream"), stream);
    std::vector<std::string> words = {"-c",
                                      "input=$1; shift; exec \"$@\" <\"$input\"",
                                      "sh",
                                      folder.Path("stream"),
                                      KELVOTOOL_MEDIA,
                                      "encode"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return RunProgram("/bin/sh", words, circumstances);
}

ToolResult Decode(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"decode"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return RunProgram(KELVOTOOL_MEDIA, words);
}

void Ffmpeg(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"-nostdin", "-v", "error", "-y"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const ToolResult result = RunProgram("/usr/bin/ffmpeg", words);
    ASSERT_EQ(result.code, 0) << result.messages;
}

} // namespace kelvo::test
