#include "tests/e2e/CodedFilm.h"

#include "media/AudioFilekel.h"
#include "media/FilmFile.h"
#include "media/VideoFilekel.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numeric>

namespace kelvo::test {
namespace {

constexpr int kCells = 16;
constexpr int kCellWidth = kCodedWidth / kCells;
constexpr std::uint16_t kWhite = 0x7FFF;

// A start click and eight that say one bit each, a millisecond a click: up is 1, down is 0.
constexpr int kBits = 8;
constexpr double kClickMs = 1.0;
constexpr double kClickMargin = 0.2; ///< what is left out at either side when a click is read
constexpr int kSilence8 = 127;
constexpr int kLoud8 = 100;
constexpr int kLoud16 = 25000;
constexpr float kThreshold = 0.25F;

// The lower half of the picture shows the cells of the upper half in reverse: a picture that is
// half old and half new is never taken for a whole one.
std::vector<std::uint8_t> BarCode(int number) {
    std::vector<std::uint8_t> pixels(std::size_t{kCodedWidth} * kCodedHeight * 2);
    for (int y = 0; y < kCodedHeight; ++y) {
        for (int x = 0; x < kCodedWidth; ++x) {
            const bool bit = ((number >> (x / kCellWidth)) & 1) != 0;
            const bool lower_half = y < kCodedHeight / 2; // rows go from the bottom up
            if (bit == lower_half) continue;
            const std::size_t at = 2 * static_cast<std::size_t>(y * kCodedWidth + x);
            pixels[at] = kWhite & 0xFF;
            pixels[at + 1] = kWhite >> 8U;
        }
    }
    return pixels;
}

/// -1, 0 or 1 at a time of an audio frame.
int ClickAt(double ms, int frame) {
    const int click = static_cast<int>(ms / kClickMs);
    if (click == 0) return 1;
    if (click > kBits) return 0;
    return ((frame >> (click - 1)) & 1) != 0 ? 1 : -1;
}

bool WritePicture(const CString& name, const CodedFilmPlan& plan) {
    VideoFilekel track;
    if (!track.Create(name, kBitmapHeadersSize, kCodedWidth * kCodedHeight * 2, plan.picture_type,
                      plan.images_per_second, 999999, false) ||
        !track.WriteVideoHeader(BuildBitmapHeaders(kCodedWidth, kCodedHeight, 16))) {
        return false;
    }
    for (int image = 0; image < plan.Images(); ++image) {
        const auto sync_number = static_cast<std::uint32_t>(plan.AudioFrameOf(image));
        if (!track.AppendFrame(BarCode(image), sync_number, 0)) return false;
    }
    return track.Close();
}

// Frames of an odd length cut samples of 16 bits in two: the sound is one stream of bytes.
bool WriteSound(const CString& name, const CodedFilmPlan& plan) {
    AudioFilekel track;
    if (!track.Create(name, 99, plan.sample_rate, plan.bytes_per_sample,
                      static_cast<std::uint32_t>(plan.audio_frames_per_second))) {
        return false;
    }
    const std::size_t frame_bytes = track.FrameBytes();
    const double samples_per_frame =
        static_cast<double>(frame_bytes) / static_cast<double>(plan.bytes_per_sample);
    std::vector<std::uint8_t> stream(frame_bytes * static_cast<std::size_t>(plan.AudioFrames()));
    for (std::size_t sample = 0; sample < stream.size() / plan.bytes_per_sample; ++sample) {
        const int frame = static_cast<int>(static_cast<double>(sample) / samples_per_frame);
        const double inside = static_cast<double>(sample) - std::ceil(frame * samples_per_frame);
        const int level = ClickAt(std::max(inside, 0.0) * 1000 / plan.sample_rate, frame);
        if (plan.bytes_per_sample == 1) {
            stream[sample] = static_cast<std::uint8_t>(kSilence8 + level * kLoud8);
        } else {
            const auto value = static_cast<std::uint16_t>(level * kLoud16);
            stream[2 * sample] = static_cast<std::uint8_t>(value);
            stream[2 * sample + 1] = static_cast<std::uint8_t>(value >> 8U);
        }
    }
    for (int frame = 0; frame < plan.AudioFrames(); ++frame) {
        const ByteView bytes{stream.data() + static_cast<std::size_t>(frame) * frame_bytes,
                             frame_bytes};
        if (!track.AppendAudioFrame(bytes, 0)) return false;
    }
    return track.Close();
}

} // namespace

int CodedFilmPlan::IndexInAudioFrame(int image) const {
    int index = 0;
    while (image > index && AudioFrameOf(image - index - 1) == AudioFrameOf(image)) {
        ++index;
    }
    return index;
}

std::string CodedFilmPlan::Name() const {
    return std::to_string(audio_frames_per_second) + " frames/s " +
           std::to_string(images_per_second) + " images/s " + std::to_string(sample_rate) + " Hz " +
           std::to_string(8 * bytes_per_sample) + " bits";
}

std::optional<std::string> MakeCodedPair(const std::string& name, const CodedFilmPlan& plan) {
    if (!WritePicture(CString((name + ".kvf").c_str()), plan)) return "the picture is not written";
    if (!WriteSound(CString((name + ".kaf").c_str()), plan)) return "the sound is not written";
    return std::nullopt;
}

std::optional<std::string> MakeCodedFilm(const std::string& file, const CodedFilmPlan& plan) {
    const std::string pair = file + ".track";
    if (const auto problem = MakeCodedPair(pair, plan)) return problem;
    const Error error = WriteFilmFile(CString(file.c_str()), CString((pair + ".kaf").c_str()),
                                      CString((pair + ".kvf").c_str()));
    std::filesystem::remove(pair + ".kvf");
    std::filesystem::remove(pair + ".kaf");
    if (error.fault != Fault::None) return "the film is not written";
    return std::nullopt;
}

std::optional<int> ReadBarCode(const VirtualScreen& screen, int left, int top) {
    int number = 0;
    for (int cell = 0; cell < kCells; ++cell) {
        const int x = left + cell * kCellWidth + kCellWidth / 2;
        const std::uint32_t upper = screen.Pixel(x, top + kCodedHeight / 4);
        const std::uint32_t lower = screen.Pixel(x, top + 3 * kCodedHeight / 4);
        if ((upper ^ lower) != 0xFFFFFF || (upper != 0 && upper != 0xFFFFFF)) return std::nullopt;
        if (upper != 0) number |= 1 << cell;
    }
    return number;
}

namespace {

// A gap in the sound, as a machine under load makes it, spoils the bits of a code, not its time.
void MendCodes(std::vector<HeardFrame>& frames) {
    for (std::size_t i = 1; i + 1 < frames.size(); ++i) {
        const int expected = (frames[i - 1].code + 1) % kFrameCodes;
        if (frames[i + 1].code == (expected + 1) % kFrameCodes) frames[i].code = expected;
    }
}

} // namespace

std::vector<HeardFrame> HeardFrames(const Recording& recording) {
    constexpr double kClickSamples = SoundServer::kRate * kClickMs / 1000;
    std::vector<HeardFrame> frames;
    const auto& samples = recording.samples;
    std::size_t at = recording.FirstLoud(0, kThreshold);
    while (at + static_cast<std::size_t>((kBits + 2) * kClickSamples) < samples.size()) {
        int code = 0;
        for (int bit = 0; bit < kBits; ++bit) {
            const auto begin =
                at + static_cast<std::size_t>((bit + 1 + kClickMargin) * kClickSamples);
            const auto end =
                at + static_cast<std::size_t>((bit + 2 - kClickMargin) * kClickSamples);
            const float sum =
                std::accumulate(samples.begin() + static_cast<std::ptrdiff_t>(begin),
                                samples.begin() + static_cast<std::ptrdiff_t>(end), 0.0F);
            if (sum > 0) code |= 1 << bit;
        }
        frames.push_back({code, recording.HeardAt(static_cast<double>(at))});
        at = recording.FirstLoud(at + static_cast<std::size_t>((kBits + 4) * kClickSamples),
                                 kThreshold);
    }
    MendCodes(frames);
    return frames;
}

} // namespace kelvo::test
