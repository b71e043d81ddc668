#include "tools/media/StreamReader.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace kelvo::media_tool {

using namespace media_stream;

namespace {

constexpr std::uint32_t kLongestText = 64 * 1024;
constexpr std::size_t kMostTexts = 64;
constexpr std::uint32_t kSamplesAtOnce = 64 * 1024; ///< bytes, about
/// So that no time that is computed from it can overflow.
constexpr std::uint64_t kLastTick = std::uint64_t{1} << 48U;

} // namespace

bool StreamReader::ReadExactly(ByteSpan bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR && StopSignal() == 0) continue;
        if (count < 0) {
            return StopSignal() != 0 ? false : report_.NotDone("standard input: cannot be read");
        }
        if (count == 0) return report_.NotDone("the stream on standard input stops before its end");
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return StopSignal() == 0;
}

bool StreamReader::ReadHead(BlockHead& head) {
    std::array<std::uint8_t, BlockHead::kBytes> bytes{};
    if (!ReadExactly(bytes)) return false;
    const auto parsed = ParseBlockHead(bytes);
    if (!parsed) return Refuse();
    head = parsed.Value();
    return true;
}

bool StreamReader::ReadText(std::uint32_t length) {
    if (length > kLongestText || description_.texts.size() >= kMostTexts) return Refuse();
    std::vector<std::uint8_t> bytes(length);
    if (!ReadExactly(bytes)) return false;
    const auto end = std::ranges::find(bytes, std::uint8_t{0});
    if (end == bytes.begin() || end == bytes.end()) return Refuse();
    description_.texts.emplace_back(std::string(bytes.begin(), end),
                                    std::string(end + 1, bytes.end()));
    return true;
}

bool StreamReader::ReadDescriptionBlock(const BlockHead& head) {
    if (head.tag == kText) return ReadText(head.length);
    if (head.tag == kPicture && head.length == PictureFormat::kBytes && !description_.picture) {
        std::array<std::uint8_t, PictureFormat::kBytes> bytes{};
        if (!ReadExactly(bytes)) return false;
        const auto format = ParsePicture(bytes);
        if (!format) return Refuse();
        description_.picture = format.Value();
        pixels_.resize(format.Value().ImageBytes());
        return true;
    }
    if (head.tag == media_stream::kSound && head.length == SoundFormat::kBytes &&
        !description_.sound) {
        std::array<std::uint8_t, SoundFormat::kBytes> bytes{};
        if (!ReadExactly(bytes)) return false;
        const auto format = ParseSound(bytes);
        if (!format) return Refuse();
        description_.sound = format.Value();
        return true;
    }
    return Refuse();
}

bool StreamReader::ReadDescription() {
    BlockHead head;
    if (!ReadHead(head)) return false;
    std::array<std::uint8_t, 4> version{};
    if (head.tag != kStart || head.length != version.size()) return Refuse();
    if (!ReadExactly(version)) return false;
    if (version != std::array<std::uint8_t, 4>{kVersion, 0, 0, 0}) {
        return report_.NotDone("the stream on standard input has another version");
    }
    while (true) {
        if (!ReadHead(head)) return false;
        if (head.tag == kData) break;
        if (!ReadDescriptionBlock(head)) return false;
    }
    if (!description_.picture && !description_.sound) {
        return report_.NotDone("there is neither picture nor sound");
    }
    return head.length == 0 || Refuse();
}

bool StreamReader::ReadImage(std::uint32_t length) {
    if (!description_.picture || length != ImageHead::kBytes + pixels_.size()) return Refuse();
    std::array<std::uint8_t, ImageHead::kBytes> bytes{};
    if (!ReadExactly(bytes)) return false;
    head_ = ParseImageHead(bytes).Value();
    if (head_.start < first_free_tick_ || head_.start > kLastTick) return Refuse();
    first_free_tick_ = head_.start + 1;
    return ReadExactly(pixels_);
}

StreamReader::Event StreamReader::ReadSamples() {
    const std::uint32_t moment = description_.sound->channels * 2;
    const std::uint32_t most = std::max(kSamplesAtOnce / moment, 1U) * moment;
    samples_.resize(std::min(samples_left_, most));
    samples_left_ -= static_cast<std::uint32_t>(samples_.size());
    return ReadExactly(samples_) ? Event::Samples : Event::Failed;
}

StreamReader::Event StreamReader::Next() {
    if (samples_left_ > 0) return ReadSamples();
    BlockHead head;
    if (!ReadHead(head)) return Event::Failed;
    if (head.tag == kImage) return ReadImage(head.length) ? Event::Image : Event::Failed;
    if (head.tag == kSamples && description_.sound &&
        head.length % (description_.sound->channels * 2) == 0) {
        samples_left_ = head.length;
        return ReadSamples();
    }
    if (head.tag == kEnd && head.length == 0) return Event::End;
    Refuse();
    return Event::Failed;
}

} // namespace kelvo::media_tool
