// Makes the demo film: demo_film OUT.kva. Twenty seconds by which anyone sees and hears at once
// whether picture and sound agree.

#include "media/AudioHeader.h"
#include "media/FilmFile.h"
#include "media/VideoFilekel.h"
#include "media/VorbisTrackWriter.h"
#include "tools/demo_film/Bell.h"
#include "tools/demo_film/ClockPicture.h"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace kelvo::demo {

namespace {

constexpr int kSeconds = 20;
constexpr int kImagesPerSecond = 25;
constexpr int kSoundFramesPerSecond = 5;
constexpr int kImagesPerSoundFrame = kImagesPerSecond / kSoundFramesPerSecond;
constexpr int kVideoType = 8;
constexpr std::uint32_t kKeyInterval = 2 * kImagesPerSecond; // a seek decodes two seconds at most
constexpr std::uint32_t kBytesPerSample = 2;
constexpr std::uint16_t kBitsPerPixel = 16;

/// A track that is needed only until the film is made of it.
class PassingFile {
public:
    explicit PassingFile(std::string name) : name_(std::move(name)) { Remove(); }
    ~PassingFile() { Remove(); }
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;

    CString Name() const { return CString(std::string_view{name_}); }

private:
    void Remove() const {
        std::error_code ignored; // there may be none
        std::filesystem::remove(name_, ignored);
    }

    std::string name_;
};

bool WritePicture(const CString& name) {
    constexpr auto kRecordLength =
        static_cast<std::uint32_t>(ClockPicture::kWidth * ClockPicture::kHeight * 2);
    const auto headers =
        BuildBitmapHeaders(ClockPicture::kWidth, ClockPicture::kHeight, kBitsPerPixel);
    VideoFilekel track;
    if (!track.Create(name, static_cast<std::uint32_t>(headers.size()), kRecordLength, kVideoType,
                      kImagesPerSecond, kKeyInterval, false) ||
        !track.WriteVideoHeader(headers)) {
        return false;
    }
    const ClockPicture picture(kImagesPerSecond);
    std::vector<std::uint8_t> bits(kRecordLength);
    for (int image = 0; image < kSeconds * kImagesPerSecond; ++image) {
        picture.Draw(image, bits);
        const auto sync_number = static_cast<std::uint32_t>(image / kImagesPerSoundFrame);
        if (!track.AppendFrame(bits, sync_number, 0)) return false;
    }
    return track.Close();
}

bool WriteSound(const CString& name) {
    const AudioHeader header = BuildWaveFormat(kSampleRate, kBytesPerSample, kSoundFramesPerSecond);
    VorbisTrackWriter writer;
    Error error = writer.Begin(name, header, Existing::Replace);
    std::vector<std::uint8_t> frame(header.FrameBytes);
    const std::uint64_t samples_per_frame = header.FrameBytes / kBytesPerSample;
    for (int n = 0; n < kSeconds * kSoundFramesPerSecond && error.fault == Fault::None; ++n) {
        StrikeBell(static_cast<std::uint64_t>(n) * samples_per_frame, frame);
        error = writer.Append(frame);
    }
    return error.fault == Fault::None && writer.Finish().fault == Fault::None;
}

int Say(std::string_view what) {
    fmt::print(stderr, "demo_film: {}\n", what);
    return 2;
}

int Main(int argc, char** argv) {
    if (argc != 2) return Say("usage: demo_film OUT.kva");
    // A bare name would mean the program's own folder.
    std::error_code error;
    const std::string film = std::filesystem::absolute(argv[1], error).string();
    if (error) return Say(error.message());
    const PassingFile picture(film + ".picture.kvf");
    const PassingFile sound(film + ".sound.kaf");
    if (!WritePicture(picture.Name())) return Say("the picture cannot be written");
    if (!WriteSound(sound.Name())) return Say("the sound cannot be written");
    const Error written = WriteFilmFile(CString(std::string_view{film}), sound.Name(),
                                        picture.Name(), Existing::Replace);
    return written.fault == Fault::None ? 0 : Say("the film cannot be written");
}

} // namespace

} // namespace kelvo::demo

int main(int argc, char** argv) {
    return kelvo::demo::Main(argc, argv);
}
