// Films that other programs made, against what is known of them: the two folders are the samples in
// the repository, and the larger ones beside it, which KELVO_SAMPLES names.

#include "container/AVDirectory.h"
#include "media/AudioFilekel.h"
#include "media/TrackNames.h"
#include "media/VideoFilekel.h"
#include "platform/base/message_boxes.h"
#include "tests/media/MediaFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>

namespace kelvo::test {

namespace {

using nlohmann::json;

std::string InRepository() {
    return KELVO_SOURCE_DIR "/tests/samples";
}

std::string BesideRepository() {
    const char* const chosen = std::getenv("KELVO_SAMPLES");
    return chosen != nullptr ? chosen : KELVO_SAMPLES;
}

json Expected(const std::string& folder) {
    std::ifstream stream(folder + "/expected.json");
    if (!stream) return {};
    return json::parse(stream).at("files");
}

/// In order, backwards, and twice at random.
std::vector<std::vector<int>> Orders(int count) {
    std::vector<int> forwards(static_cast<std::size_t>(count));
    std::iota(forwards.begin(), forwards.end(), 0);
    std::vector<int> backwards(forwards.rbegin(), forwards.rend());
    std::vector<std::vector<int>> orders{forwards, backwards};
    std::mt19937 random(4711);
    for (int i = 0; i < 2; ++i) {
        std::shuffle(forwards.begin(), forwards.end(), random);
        orders.push_back(forwards);
    }
    return orders;
}

void CheckContainer(const ZFilekel& track, const json& fields) {
    const ContainerHeader& header = track.Header();
    EXPECT_EQ(header.UserHeaderSize, fields.at("UserHeaderSize"));
    EXPECT_EQ(header.RecordLength, fields.at("RecordLength"));
    EXPECT_EQ(header.SideLength, fields.at("SideLength"));
    EXPECT_EQ(header.CreatorValue, fields.at("CreatorValue"));
    EXPECT_EQ(header.RecordCount, fields.at("RecordCount"));
    EXPECT_EQ(header.CompressionType, fields.at("CompressionType"));
    EXPECT_EQ(header.KeyInterval, fields.at("KeyInterval"));
    EXPECT_EQ(header.IndexOffset, fields.at("IndexOffset"));
}

void CheckAudioFields(const AudioFilekel& track, const json& info) {
    const json& fields = info.at("track");
    EXPECT_EQ(track.SampleRate(), fields.at("SampleRate"));
    EXPECT_EQ(track.BytesPerSample(), fields.at("BytesPerSample"));
    EXPECT_EQ(track.nFramesAlSec(), fields.at("nFramesAlSec"));
    EXPECT_EQ(track.FrameBytes(), fields.at("FrameBytes"));
    EXPECT_EQ(DWORD{track.GetWaveFormat()->nAvgBytesPerSec}, fields.at("nAvgBytesPerSec"));
    ASSERT_EQ(track.IsVorbis(), info.at("form") == "vorbis");
    if (!track.IsVorbis()) return CheckContainer(track, info.at("container"));
    const VorbisDescription& description = track.Vorbis()->Description();
    EXPECT_EQ(description.frame_count, info.at("vorbis").at("FrameCount"));
    EXPECT_EQ(description.channels, info.at("vorbis").at("channels"));
}

void CheckAudio(const CString& name, const json& info, const json& frames) {
    AudioFilekel track;
    ASSERT_TRUE(track.OpenForRead(name));
    CheckAudioFields(track, info);
    ASSERT_EQ(track.FrameCount(), frames.at("count"));
    int next = 0;
    std::uint32_t time = 0;
    for (int i = 0; i < track.FrameCount(); ++i) {
        ASSERT_TRUE(track.ReadNextAudioFrame(next, time));
        EXPECT_EQ(next, i + 1);
        const auto n = static_cast<std::size_t>(i);
        ASSERT_EQ(Sha256(track.FrameData()), frames.at("sha256").at(n)) << i;
        if (track.IsVorbis()) {
            EXPECT_TRUE(track.Vorbis()->LastFrameComplete()) << i;
        } else {
            EXPECT_EQ(time, frames.at("side").at(n).at(0)) << i;
        }
    }
    EXPECT_FALSE(track.ReadNextAudioFrame(next, time));
    EXPECT_EQ(next, NoFrameIndex);
    for (const std::vector<int>& order : Orders(track.FrameCount())) {
        for (const int i : order) {
            ASSERT_TRUE(track.ReadAudioFrame(i, time));
            ASSERT_EQ(Sha256(track.FrameData()),
                      frames.at("sha256").at(static_cast<std::size_t>(i)))
                << i;
        }
    }
}

void CheckVideoFields(const VideoFilekel& track, const json& fields) {
    EXPECT_EQ(track.Width(), fields.at("biWidth"));
    EXPECT_EQ(track.Height(), fields.at("biHeight"));
    EXPECT_EQ(track.BitCount(), fields.at("biBitCount"));
    EXPECT_EQ(track.nImgAlSec(), fields.at("nImgAlSec"));
    EXPECT_EQ(track.IsScanned(), (fields.at("VideoFlags").get<int>() & 0x4000) != 0);
}

FrameSide SideIn(const json& numbers) {
    return {numbers.at(0), numbers.at(1), numbers.at(2)};
}

void CheckVideo(const CString& name, const json& info, const json& images) {
    VideoFilekel track;
    ASSERT_TRUE(track.OpenForRead(name));
    CheckContainer(track, info.at("container"));
    CheckVideoFields(track, info.at("track"));
    ASSERT_EQ(track.FrameCount(), images.at("count"));
    FrameSide side;
    for (int i = 0; i < track.FrameCount(); ++i) {
        const FrameSide expected = SideIn(images.at("side").at(static_cast<std::size_t>(i)));
        EXPECT_EQ(track.CurrentSyncNumber(), expected.SyncNumber);
        ASSERT_TRUE(track.ReadNextFrame(side));
        ASSERT_EQ(Sha256(track.FrameBits()), images.at("sha256").at(static_cast<std::size_t>(i)))
            << i;
        EXPECT_EQ(side, expected) << i;
    }
    EXPECT_FALSE(track.ReadNextFrame(side));
    for (const std::vector<int>& order : Orders(track.FrameCount())) {
        for (const int i : order) {
            ASSERT_TRUE(track.ReadFrame(i, side));
            ASSERT_EQ(Sha256(track.FrameBits()),
                      images.at("sha256").at(static_cast<std::size_t>(i)))
                << i;
            EXPECT_EQ(side, SideIn(images.at("side").at(static_cast<std::size_t>(i)))) << i;
        }
    }
}

/// A picture that is listed with an error is damaged: it plays as far as it goes.
void CheckDamaged(const CString& name) {
    VideoFilekel track;
    ASSERT_TRUE(track.OpenForRead(name));
    EXPECT_GT(track.FrameCount(), 0);
    FrameSide side;
    int images = 0;
    for (; track.ReadNextFrame(side); ++images)
        EXPECT_FALSE(track.RecordIsDamaged()) << images;
    EXPECT_EQ(images, track.FrameCount());
}

/// A track that is not listed does not open, and no box says so.
void CheckAbsent(const CString& name, bool video) {
    if (video) {
        VideoFilekel track;
        EXPECT_FALSE(track.OpenForRead(name));
    } else {
        AudioFilekel track;
        EXPECT_FALSE(track.OpenForRead(name));
    }
}

void CheckFilm(const std::string& path, const json& expected) {
    const platform::MessageBoxRecorder boxes;
    const CString name{std::string_view{path}};
    ASSERT_TRUE(std::filesystem::exists(path));
    ASSERT_EQ(Sha256(ReadFile(name)), expected.at("file_sha256"));
    const json& info = expected.at("info");
    if (info.contains("AVDirectory")) {
        const AVDirectory directory = ParseAVDirectory(ReadFile(name)).Value();
        EXPECT_EQ(info.at("AVDirectory"), (json{directory.audio.start, directory.audio.end,
                                                directory.video.start, directory.video.end}));
    }
    std::size_t damaged = 0;
    for (const char* const kind : {"a", "v"}) {
        const bool video = *kind == 'v';
        if (info.contains(kind) && info.at(kind).contains("error")) {
            ASSERT_TRUE(video);
            CheckDamaged(name);
            ++damaged;
        } else if (!info.contains(kind)) {
            CheckAbsent(name, video);
        } else if (video) {
            CheckVideo(name, info.at(kind), expected.at("tracks").at(kind));
        } else {
            CheckAudio(name, info.at(kind), expected.at("tracks").at(kind));
        }
        if (testing::Test::HasFatalFailure()) return;
    }
    EXPECT_EQ(boxes.Boxes().size(), damaged);
}

void CheckFolder(const std::string& folder, std::size_t least) {
    const json films = Expected(folder);
    ASSERT_TRUE(films.is_object())
        << "no samples in " << folder << "; KELVO_SAMPLES names the folder that holds them";
    ASSERT_GE(films.size(), least);
    for (const auto& [file, expected] : films.items()) {
        SCOPED_TRACE(file);
        CheckFilm(folder + "/" + file, expected);
    }
}

TEST(SampleFilms, OfTheRepositoryDecodeToWhatIsKnownOfThem) {
    CheckFolder(InRepository(), 4);
}

TEST(SampleFilms, BesideTheRepositoryDecodeToWhatIsKnownOfThem) {
    CheckFolder(BesideRepository(), 9);
}

TEST(SampleFilms, AreFoundInAnotherCaseOfTheirLetters) {
    const TrackNames names =
        ResolveTrackNames(CString{std::string_view{InRepository() + "/SQUARE.KAF"}});
    VideoFilekel track;
    EXPECT_TRUE(track.OpenForRead(names.video));
}

} // namespace

} // namespace kelvo::test
