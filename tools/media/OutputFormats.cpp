#include "tools/media/OutputFormats.h"

#include <algorithm>
#include <cctype>

namespace kelvo::media_tool {

namespace {

// Each slice of an image carries a check sum, and every image stands by itself: damage stays where
// it is, and is found.
constexpr PictureCoder kFfv1[] = {
    {"ffv1", AV_PIX_FMT_BGR0, "level=3:slicecrc=1:g=1:context=1", true},
};
constexpr PictureCoder kH264Lossless[] = {
    {"libx264rgb", AV_PIX_FMT_RGB24, "qp=0:preset=medium", true},
};
constexpr PictureCoder kH264[] = {
    {"libx264", AV_PIX_FMT_YUV420P, "crf=20:preset=medium", false},
    {"libopenh264", AV_PIX_FMT_YUV420P, "", false},
    {"mpeg4", AV_PIX_FMT_YUV420P, "qscale=3:flags=+qscale", false},
};
constexpr PictureCoder kVp9Lossless[] = {
    {"libvpx-vp9", AV_PIX_FMT_GBRP, "lossless=1:row-mt=1:cpu-used=4", true},
};
constexpr PictureCoder kVp9[] = {
    {"libvpx-vp9", AV_PIX_FMT_YUV420P, "crf=30:b=0:row-mt=1:cpu-used=4:deadline=good", false},
    {"libvpx", AV_PIX_FMT_YUV420P, "crf=10:b=2M:cpu-used=2:deadline=good", false},
};
constexpr PictureCoder kGif[] = {{"gif", AV_PIX_FMT_PAL8, "", false}};

constexpr SoundCoder kFlac[] = {{"flac", 0, true}};
constexpr SoundCoder kAlac[] = {{"alac", 0, true}};
constexpr SoundCoder kAac[] = {{"aac", 96'000, false}};
// This container takes no lossless sound: the best that it takes.
constexpr SoundCoder kOpusBest[] = {{"libopus", 256'000, false}, {"libvorbis", 256'000, false}};
constexpr SoundCoder kOpus[] = {{"libopus", 64'000, false}, {"libvorbis", 96'000, false}};

constexpr OutputFormat kFormats[] = {
    {"mkv", "matroska", true, kFfv1, kH264, kFlac, kAac},
    {"mp4", "mp4", false, kH264Lossless, kH264, kAlac, kAac},
    {"webm", "webm", false, kVp9Lossless, kVp9, kOpusBest, kOpus},
    {"flac", "flac", true, {}, {}, kFlac, kFlac},
    {"gif", "gif", false, kGif, kGif, {}, {}},
};

} // namespace

const OutputFormat* FindOutputFormat(std::string_view name) {
    const auto same_letter = [](char left, char right) {
        return std::tolower(static_cast<unsigned char>(left)) == right;
    };
    const auto* const found = std::ranges::find_if(kFormats, [&](const OutputFormat& format) {
        return std::ranges::equal(name, format.name, same_letter);
    });
    return found == std::end(kFormats) ? nullptr : found;
}

} // namespace kelvo::media_tool
