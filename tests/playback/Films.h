#pragma once
// Small films made for a test: every image is one colour that tells its number, every sound frame
// one value.

#include "framework/base/CString.h"
#include "media/AudioFilekel.h"
#include "media/VideoFilekel.h"
#include "platform/base/types.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kelvo::test {

/// A folder that goes away with the test.
class FilmFolder {
public:
    FilmFolder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "kelvo-play-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~FilmFolder() { std::filesystem::remove_all(path_); }
    FilmFolder(const FilmFolder&) = delete;
    FilmFolder& operator=(const FilmFolder&) = delete;
    CString Name(const char* file) const { return CString((path_ / file).c_str()); }

private:
    std::filesystem::path path_;
};

inline constexpr int kImageWidth = 32;
inline constexpr int kImageHeight = 24;

/// The 16-bit pixel that all of an image consists of.
constexpr std::uint16_t PixelOfImage(int image) {
    return static_cast<std::uint16_t>(((image + 1) * 37) & 0x7FFF);
}
/// The same as the screen shows it.
inline COLORREF ColourOfImage(int image) {
    const auto wide = [](unsigned five) { return (five << 3U) | (five >> 2U); };
    const unsigned pixel = PixelOfImage(image);
    return RGB(wide(pixel >> 10U), wide((pixel >> 5U) & 31U), wide(pixel & 31U));
}

struct VideoPlan {
    int images = 10;
    int images_per_second = 25;
    int type = 2;
    std::uint32_t key_interval = 999999;
    std::function<std::uint32_t(int)> sync = [](int) { return kNeverLinked; };
};

inline void MakeVideo(const CString& name, const VideoPlan& plan) {
    const std::uint32_t length = kImageWidth * kImageHeight * 2;
    VideoFilekel track;
    ASSERT_TRUE(track.Create(name, kBitmapHeadersSize, length, plan.type, plan.images_per_second,
                             plan.key_interval, false));
    ASSERT_TRUE(track.WriteVideoHeader(BuildBitmapHeaders(kImageWidth, kImageHeight, 16)));
    for (int image = 0; image < plan.images; ++image) {
        std::vector<std::uint8_t> pixels(length);
        for (std::size_t i = 0; i < pixels.size(); i += 2) {
            pixels[i] = static_cast<std::uint8_t>(PixelOfImage(image));
            pixels[i + 1] = static_cast<std::uint8_t>(PixelOfImage(image) >> 8U);
        }
        ASSERT_TRUE(track.AppendFrame(pixels, plan.sync(image), 0));
    }
    ASSERT_TRUE(track.Close());
}

struct AudioPlan {
    int frames = 10;
    std::uint32_t rate = 8000;
    std::uint32_t bytes_per_sample = 1;
    std::uint32_t frames_per_second = 10;
    int type = 99;
    /// Byte `offset` of the whole sound.
    std::function<std::uint8_t(std::size_t offset)> byte = [](std::size_t) { return 127; };
};

inline void MakeAudio(const CString& name, const AudioPlan& plan) {
    AudioFilekel track;
    ASSERT_TRUE(
        track.Create(name, plan.type, plan.rate, plan.bytes_per_sample, plan.frames_per_second));
    std::size_t offset = 0;
    for (int frame = 0; frame < plan.frames; ++frame) {
        std::vector<std::uint8_t> bytes(track.FrameBytes());
        for (std::uint8_t& byte : bytes) {
            byte = plan.byte(offset++);
        }
        ASSERT_TRUE(track.AppendAudioFrame(bytes, 0));
    }
    ASSERT_TRUE(track.Close());
}

} // namespace kelvo::test
