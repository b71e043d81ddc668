// Damaged films in the hands of the player: they open, play what is there, say so once, and their
// files stay as they are.

#include "media/AudioFilekel.h"
#include "media/FilmTracks.h"
#include "media/VideoFilekel.h"
#include "platform/base/message_boxes.h"
#include "tests/media/MediaFiles.h"
#include "tests/media/OggStreams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace kelvo::test {

namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kSamples[] = KELVO_SOURCE_DIR "/tests/samples/";
constexpr std::size_t kIndexOffsetField = 28;

std::uint32_t NumberAt(const Bytes& bytes, std::size_t offset) {
    return bytes[offset] | bytes[offset + 1] << 8U | bytes[offset + 2] << 16U |
           static_cast<std::uint32_t>(bytes[offset + 3]) << 24U;
}

Bytes SampleBytes(const char* name) {
    return ReadFile(CString{kSamples} + name);
}

/// Zeros over an index, which is what comes last in a track.
Bytes WithoutIndex(Bytes track) {
    std::fill(track.begin() + NumberAt(track, kIndexOffsetField), track.end(), std::uint8_t{0});
    return track;
}

/// Zeros over records.
Bytes WithoutRecords(Bytes track, std::size_t first, std::size_t end) {
    const std::uint32_t index = NumberAt(track, kIndexOffsetField);
    std::fill(track.begin() + NumberAt(track, index + first * 4),
              track.begin() + NumberAt(track, index + end * 4), std::uint8_t{0});
    return track;
}

std::vector<std::string> Images(VideoFilekel& track) {
    std::vector<std::string> images;
    FrameSide side;
    while (track.ReadNextFrame(side))
        images.push_back(Sha256(track.FrameBits()));
    return images;
}

std::vector<std::string> ImagesOf(const CString& name) {
    VideoFilekel track;
    return track.OpenForRead(name) ? Images(track) : std::vector<std::string>{};
}

TEST(DamagedFilmOpening, ShowsOneBoxForBothTracksAndPlaysBoth) {
    const TemporaryFolder folder;
    const Bytes picture = SampleBytes("square.kvf");
    const Bytes sound = SampleBytes("screen.kaf");
    const Bytes bad_picture = WithoutIndex(WithoutRecords(picture, 20, 22));
    const Bytes bad_sound = WithoutIndex(WithoutRecords(sound, 10, 12));
    const std::pair<CString, CString> films[] = {
        {folder.Write("pair.kvf", bad_picture), folder.Write("pair.kaf", bad_sound)},
        {folder.Write("film.kva", FilmOf(bad_sound, bad_picture)), folder.Name("film.kva")}};
    const std::vector<std::string> whole = ImagesOf(CString{kSamples} + "square.kvf");
    for (const auto& [picture_name, sound_name] : films) {
        const Bytes before = ReadFile(picture_name);
        const MessageBoxRecorder boxes;
        for (int round = 1; round <= 2; ++round) { // a film that is opened again says it again
            VideoFilekel video;
            AudioFilekel audio;
            ASSERT_TRUE(video.OpenForRead(picture_name));
            ASSERT_TRUE(audio.OpenForRead(sound_name));
            const std::vector<std::string> images = Images(video);
            ASSERT_EQ(images.size(), 60U);
            EXPECT_EQ(images[19], whole[19]);
            EXPECT_EQ(images[20], whole[19]); // the last one that is there
            EXPECT_EQ(images[59], whole[59]); // and no number has moved
            int next = 0;
            std::uint32_t time = 0;
            int silent = 0;
            int frames = 0;
            for (; audio.ReadNextAudioFrame(next, time); ++frames)
                silent += std::ranges::all_of(audio.FrameData(), [](auto b) { return b == 127; });
            EXPECT_EQ(frames, 60);
            EXPECT_GE(silent, 2);
            EXPECT_TRUE(audio.ReadAudioFrame(11, time));
            EXPECT_EQ(audio.FrameData()[100], 127);
            EXPECT_EQ(boxes.Boxes().size(), static_cast<std::size_t>(round));
            EXPECT_FALSE(video.Recompress({.compression_type = 9}, nullptr));
        }
        EXPECT_THAT(boxes.Texts()[0], HasSubstr("danneggiato"));
        EXPECT_EQ(boxes.Boxes()[0].caption, "ATTENZIONE");
        EXPECT_EQ(ReadFile(picture_name), before);
    }
    EXPECT_THAT(folder.Files(), ElementsAre("film.kva", "pair.kaf", "pair.kvf"));
}

TEST(DamagedFilmOpening, LeavesSoundFilmsAndForeignFilesAlone) {
    const TemporaryFolder folder;
    const MessageBoxRecorder boxes;
    VideoFilekel video;
    EXPECT_TRUE(video.OpenForRead(CString{kSamples} + "square.kvf"));
    EXPECT_EQ(video.Salvaged(), nullptr);
    video.Close();
    EXPECT_FALSE(video.OpenForRead(CString{kSamples} + "screen.kaf"));
    EXPECT_FALSE(video.OpenForRead(folder.Write("text.kvf", Bytes(5000, 'x'))));
    EXPECT_FALSE(video.OpenForRead(folder.Write("text.kva", Bytes(5000, 'x'))));
    EXPECT_FALSE(video.OpenForRead(folder.Name("none.kvf")));
    EXPECT_EQ(video.LastError().fault, Fault::Missing);
    EXPECT_THAT(boxes.Texts(), IsEmpty());
}

TEST(DamagedFilmOpening, FindsTracksThatTheDirectoryMisplaces) {
    const TemporaryFolder folder;
    const Bytes picture = SampleBytes("square.kvf");
    const std::vector<std::string> whole = ImagesOf(CString{kSamples} + "square.kvf");
    for (const char* const sound_name : {"screen.kaf", "bells.kaf"}) { // a container, and Vorbis
        const Bytes sound = SampleBytes(sound_name);
        const Bytes film = FilmOf(sound, picture);
        for (std::size_t lie = 0; lie < 6; ++lie) {
            SCOPED_TRACE(testing::Message() << sound_name << " " << lie);
            Bytes bytes = film;
            switch (lie) {
            case 0:
                std::fill_n(bytes.begin(), 16, std::uint8_t{0});
                break;
            case 1:
                std::fill_n(bytes.begin(), 16, std::uint8_t{0xFF});
                break;
            case 2: // swapped
                std::rotate(bytes.begin(), bytes.begin() + 8, bytes.begin() + 16);
                break;
            case 3:
                Set32(bytes, 8, NumberAt(film, 8) + 1);
                break;
            case 4:
                Set32(bytes, 0, 20);
                break;
            default:
                Set32(bytes, 12, NumberAt(film, 8) + 5000);
            }
            const CString name = folder.Write("a.kva", bytes);
            const MessageBoxRecorder boxes;
            VideoFilekel video;
            AudioFilekel audio;
            ASSERT_TRUE(video.OpenForRead(name));
            ASSERT_TRUE(audio.OpenForRead(name));
            EXPECT_EQ(audio.FrameCount(), 60);
            const std::vector<std::string> images = Images(video);
            ASSERT_LE(images.size(), 60U);
            ASSERT_FALSE(images.empty());
            EXPECT_EQ(images.front(), whole.front());
            EXPECT_EQ(images.size(), 60U);
            EXPECT_EQ(boxes.Boxes().size(), 1U);
        }
    }
}

/// The frame that a track gives for a number, as text.
std::vector<Bytes> Frames(const CString& name) {
    std::vector<Bytes> frames;
    AudioFilekel track;
    if (!track.OpenForRead(name)) return frames;
    int next = 0;
    std::uint32_t time = 0;
    while (track.ReadNextAudioFrame(next, time))
        frames.emplace_back(track.FrameData().begin(), track.FrameData().end());
    return frames;
}

double Distance(const Bytes& a, const Bytes& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += std::abs(int{a[i]} - int{b[i]});
    return sum / static_cast<double>(a.size());
}

TEST(OggStreamWithAHole, KeepsItsPlaceInTime) {
    const TemporaryFolder folder;
    const MessageBoxRecorder boxes;
    const VorbisTrack track = SweepTrack(30);
    const std::vector<Bytes> whole = Frames(folder.Write("whole.kaf", track.Build()));
    const std::vector<std::size_t> pages = PageLengths(track.stream);
    ASSERT_GT(pages.size(), 8U);
    std::size_t start = 0;
    for (std::size_t i = 0; i < 5; ++i)
        start += pages[i];
    const std::size_t length = pages[5] + pages[6];
    VorbisTrack zeroed = track;
    std::fill_n(zeroed.stream.begin() + static_cast<std::ptrdiff_t>(start), length,
                std::uint8_t{0});
    VorbisTrack shortened = track; // the pages are gone altogether
    shortened.stream.erase(shortened.stream.begin() + static_cast<std::ptrdiff_t>(start),
                           shortened.stream.begin() + static_cast<std::ptrdiff_t>(start + length));
    VorbisTrack middle = track; // from the middle of one page to the middle of another
    std::fill_n(middle.stream.begin() + static_cast<std::ptrdiff_t>(start + 700), length,
                std::uint8_t{0xFF});
    for (const VorbisTrack& damaged : {zeroed, shortened, middle}) {
        const std::vector<Bytes> frames = Frames(folder.Write("hole.kaf", damaged.Build()));
        ASSERT_EQ(frames.size(), whole.size());
        std::size_t silent = 0;
        for (std::size_t n = 0; n < frames.size(); ++n) {
            silent += std::ranges::all_of(frames[n], [](auto b) { return b == 127; }) ? 1 : 0;
            const double most = n < 10 ? 0.1 : n + 40 >= frames.size() ? 2 : 256;
            EXPECT_LT(Distance(frames[n], whole[n]), most) << n;
        }
        EXPECT_GT(silent, 3U);
        EXPECT_LT(silent, 150U);
        // The way back through the hole, and by leaps, leads to the same places.
        AudioFilekel leaps;
        ASSERT_TRUE(leaps.OpenForRead(folder.Name("hole.kaf")));
        std::uint32_t time = 0;
        for (const int n : {299, 5, 280, 150}) {
            ASSERT_TRUE(leaps.ReadAudioFrame(n, time));
            EXPECT_TRUE(std::ranges::equal(leaps.FrameData(), frames[static_cast<std::size_t>(n)]))
                << n;
        }
    }
}

} // namespace

} // namespace kelvo::test
