#include "media/VorbisFilekel.h"

#include "media/AudioFilekel.h"
#include "media/VorbisDecoder.h"
#include "platform/base/message_boxes.h"
#include "tests/media/MediaFiles.h"
#include "tests/media/OggStreams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <thread>
#include <utility>

namespace kelvo::test {

namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kHeaderLength = 34;

Bytes Frame(const VorbisFilekel& track) {
    return Bytes(track.FrameBuffer().begin(), track.FrameBuffer().end());
}

std::vector<Bytes> AllFrames(const CString& name) {
    VorbisFilekel track;
    EXPECT_TRUE(track.OpenForRead(name, kHeaderLength));
    std::vector<Bytes> frames;
    while (track.ReadNextFrame()) {
        frames.push_back(Frame(track));
    }
    return frames;
}

TEST(DecodedSamples, AreCutTowardZeroAndClamped) {
    struct Sample {
        float value;
        std::int16_t wide;
        std::uint8_t narrow;
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Sample samples[] = {
        {1.0F, 32767, 254},   {-1.0F, -32767, 0},    {0.5F, 16383, 190},
        {-0.5F, -16383, 64},  {0.0F, 0, 127},        {0.007F, 229, 127},   // 0.889 is cut
        {-0.007F, -229, 127}, {1.5F, 32767, 254},    {-1.5F, -32768, 255}, // -128 + 127 in one byte
        {1e30F, 32767, 254},  {-1e30F, -32768, 255}, {nan, -32768, 255}};
    for (const Sample& sample : samples) {
        const float* const channel = &sample.value;
        std::uint8_t wide[2];
        std::uint8_t narrow[1];
        ConvertSamples({&channel, 1}, 1, 2, wide);
        ConvertSamples({&channel, 1}, 1, 1, narrow);
        EXPECT_EQ(static_cast<std::int16_t>(wide[0] | wide[1] << 8U), sample.wide) << sample.value;
        EXPECT_EQ(narrow[0], sample.narrow) << sample.value;
    }
}

TEST(VorbisSignature, MustBeThereToTheLetter) {
    const MessageBoxRecorder boxes;
    const TemporaryFolder folder;
    const Bytes track = SweepTrack(1).Build();
    EXPECT_TRUE(VorbisFilekel::IsVorbisFile(folder.Write("good.vrb", track)));
    Bytes other = track;
    other[29] = '1';
    const CString other_name = folder.Write("other.kaf", other);
    EXPECT_FALSE(VorbisFilekel::IsVorbisFile(other_name));
    VorbisFilekel vorbis;
    EXPECT_FALSE(vorbis.OpenForRead(other_name, kHeaderLength));
    EXPECT_FALSE(vorbis.IsOpen());
    EXPECT_FALSE(VorbisFilekel::IsVorbisFile(
        folder.Write("short.kaf", Bytes(track.begin(), track.begin() + 29))));
    EXPECT_FALSE(VorbisFilekel::IsVorbisFile(folder.Name("missing.kaf")));
    // In a film only the sound is looked at.
    EXPECT_TRUE(VorbisFilekel::IsVorbisFile(folder.Write("a.kva", FilmOf(track, Bytes(50, 1)))));
    EXPECT_FALSE(VorbisFilekel::IsVorbisFile(folder.Write("b.KVA", FilmOf(Bytes(50, 1), track))));
    EXPECT_FALSE(VorbisFilekel::IsVorbisFile(folder.Write("c.kva", FilmOf({}, track))));
    EXPECT_FALSE(VorbisFilekel::IsVorbisFile(folder.Write("d.kva", track)));
    EXPECT_THAT(boxes.Boxes(), IsEmpty());
}

TEST(VorbisTracks, DeliverTheStreamFrameByFrame) {
    const TemporaryFolder folder;
    const CString name = folder.Write("track.vrb", SweepTrack(3).Build());
    VorbisFilekel track;
    ASSERT_TRUE(track.OpenForRead(name, kHeaderLength));
    EXPECT_EQ(track.FrameCount(), 30);
    EXPECT_EQ(track.HeaderBuffer().size(), kHeaderLength);
    EXPECT_EQ(track.Comments().View(), "TITLE=a toneARTIST=nobody");
    EXPECT_FALSE(track.Vendor().IsEmpty());
    EXPECT_EQ(track.StreamChannels(), 1U);
    EXPECT_EQ(track.StreamSampleRate(), 22050U);
    const std::vector<float> sweep = Sweep(3, 22050);
    for (int frame = 0; frame < 30; ++frame) {
        ASSERT_TRUE(track.ReadNextFrame());
        EXPECT_EQ(track.CurrentFrame(), frame + 1);
        EXPECT_TRUE(track.LastFrameComplete());
        double error = 0;
        for (std::size_t i = 0; i < 2205; ++i) {
            const double wanted = sweep[static_cast<std::size_t>(frame) * 2205 + i] * 127.0 + 127.0;
            error += std::pow(wanted - track.FrameBuffer()[i], 2.0) / 2205;
        }
        EXPECT_LT(std::sqrt(error), 8.0) << frame; // of a tone that is 64 high
    }
    EXPECT_FALSE(track.ReadNextFrame());
    EXPECT_EQ(track.CurrentFrame(), 30);
    EXPECT_FALSE(track.StreamDamaged());
}

TEST(VorbisTracks, GiveTheSameFramesAtAnyPosition) {
    const ProgressRecorder progress; // neither shown nor stopped by anybody
    const TemporaryFolder folder;
    VorbisTrack odd; // frames that cut samples in two
    odd.sample_rate = 11025;
    odd.bytes_per_sample = 2;
    odd.frame_count = 300;
    odd.stream = EncodedStream({Sweep(30, 11025)}, 11025);
    for (const auto& [file, bytes] :
         {std::pair{"even.vrb", SweepTrack(30).Build()}, std::pair{"odd.vrb", odd.Build()}}) {
        const CString name = folder.Write(file, bytes);
        const std::vector<Bytes> frames = AllFrames(name);
        ASSERT_EQ(frames.size(), 300U);
        VorbisFilekel track;
        ASSERT_TRUE(track.OpenForRead(name, kHeaderLength));
        for (const int frame : {5, 6, 4, 0, 299, 298, 150, 151, 150, 20, 299, 0, 1, 300, 299}) {
            ASSERT_TRUE(track.GoToFrame(frame));
            EXPECT_EQ(track.CurrentFrame(), frame);
            ASSERT_EQ(track.ReadNextFrame(), frame < 300) << frame;
            if (frame == 300) continue;
            EXPECT_EQ(Frame(track), frames[static_cast<std::size_t>(frame)]) << file << frame;
        }
        EXPECT_TRUE(track.GoToFrame(-5));
        EXPECT_EQ(track.CurrentFrame(), 0);
        EXPECT_TRUE(track.GoToFrame(INT_MAX));
        EXPECT_EQ(track.CurrentFrame(), 300);
    }
}

TEST(VorbisPositioning, ShowsItsProgressOnLongWaysOnly) {
    const TemporaryFolder folder;
    const CString name = folder.Write("track.vrb", SweepTrack(60).Build());
    ProgressRecorder progress;
    VorbisFilekel track;
    ASSERT_TRUE(track.OpenForRead(name, kHeaderLength));
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(track.ReadNextFrame());
    }
    EXPECT_TRUE(track.GoToFrame(9)); // still in the buffer
    EXPECT_TRUE(track.GoToFrame(9)); // there already
    EXPECT_THAT(progress.titles, IsEmpty());

    EXPECT_TRUE(track.GoToFrame(500));
    EXPECT_THAT(progress.titles, ElementsAre("Attendere..."));
    EXPECT_EQ(progress.total, 10000);
    EXPECT_EQ(progress.closed, 1);
    EXPECT_TRUE(std::ranges::is_sorted(progress.shares));
    EXPECT_LT(progress.shares.back(), 10000);
    EXPECT_GT(progress.shares.size(), 10U);

    EXPECT_TRUE(track.GoToFrame(0)); // starts the stream anew, and there is nothing to pass over
    EXPECT_EQ(progress.titles.size(), 1U);
    ASSERT_TRUE(track.ReadNextFrame());
    EXPECT_EQ(Frame(track), AllFrames(name)[0]);
}

TEST(VorbisPositioning, LeavesTheTrackAtItsStartWhenItIsCancelled) {
    const TemporaryFolder folder;
    const CString name = folder.Write("track.vrb", SweepTrack(60).Build());
    const std::vector<Bytes> frames = AllFrames(name);
    ProgressRecorder progress;
    progress.cancel_at = 3;
    VorbisFilekel track;
    ASSERT_TRUE(track.OpenForRead(name, kHeaderLength));
    ASSERT_TRUE(track.ReadNextFrame());
    EXPECT_TRUE(track.GoToFrame(500));
    EXPECT_EQ(progress.shares.size(), 4U);
    EXPECT_EQ(track.CurrentFrame(), 0);
    ASSERT_TRUE(track.ReadNextFrame());
    EXPECT_EQ(Frame(track), frames[0]);
    ASSERT_TRUE(track.ReadNextFrame());
    EXPECT_EQ(Frame(track), frames[1]);
}

TEST(VorbisPositioning, OutlivesWhatWindowsDoMeanwhile) {
    const TemporaryFolder folder;
    const CString name = folder.Write("track.kaf", SweepTrack(60).Build());
    ProgressRecorder progress;
    AudioFilekel track;
    ASSERT_TRUE(track.OpenForRead(name));
    int frame = 0;
    std::uint32_t time = 0;
    bool read = true;
    progress.during = [&] { read = track.ReadNextAudioFrame(frame, time); };
    EXPECT_TRUE(track.GoToAudioFrame(500));
    EXPECT_FALSE(read);
    EXPECT_EQ(track.CurrentAudioFrame(), 500);

    progress.during = [&] { track.Close(); };
    EXPECT_TRUE(track.GoToAudioFrame(100));
    EXPECT_FALSE(track.IsTrackOpen());
}

TEST(BoxOfADamagedStream, MayReadTheTrackItselfWhileItIsOpen) {
    const TemporaryFolder folder;
    VorbisTrack track = SweepTrack(30);
    const std::vector<std::size_t> pages = PageLengths(track.stream);
    ASSERT_GT(pages.size(), 5U);
    track.stream[pages[0] + pages[1] + pages[2] + 100] ^= 0x55;
    const CString name = folder.Write("damaged.vrb", track.Build());
    std::vector<Bytes> expected;
    {
        const MessageBoxRecorder boxes;
        expected = AllFrames(name);
    }
    std::vector<Bytes> frames;
    VorbisFilekel vorbis;
    const auto read_one = [&] {
        const bool read = vorbis.ReadNextFrame();
        if (read) frames.push_back(Frame(vorbis));
        return read;
    };
    int boxes = 0;
    // As where the sound plays on behind an open box.
    auto before = platform::SetMessageBoxHandler([&](const platform::MessageBoxRequest& request) {
        ++boxes;
        read_one();
        read_one();
        return platform::SafeAnswer(request.type);
    });
    ASSERT_TRUE(vorbis.OpenForRead(name, kHeaderLength));
    while (read_one()) {}
    platform::SetMessageBoxHandler(std::move(before));
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(frames, expected);
}

TEST(TwoVorbisTracks, TakeTheDecoderFromEachOtherWithoutHarm) {
    const TemporaryFolder folder;
    const CString first_name = folder.Write("first.vrb", SweepTrack(8).Build());
    VorbisTrack other = SweepTrack(1);
    other.frame_count = 80;
    other.stream = EncodedStream({Tone(8, 22050, 1000)}, 22050);
    const CString second_name = folder.Write("second.vrb", other.Build());
    const std::vector<Bytes> first_frames = AllFrames(first_name);
    const std::vector<Bytes> second_frames = AllFrames(second_name);
    ASSERT_EQ(first_frames.size(), 80U);

    VorbisFilekel first;
    ASSERT_TRUE(first.OpenForRead(first_name, kHeaderLength));
    ASSERT_TRUE(first.ReadNextFrame());
    VorbisFilekel second;
    ASSERT_TRUE(second.OpenForRead(second_name, kHeaderLength));
    for (std::size_t frame = 1; frame < 80; ++frame) {
        ASSERT_TRUE(first.ReadNextFrame());
        ASSERT_EQ(Frame(first), first_frames[frame]) << frame;
        ASSERT_TRUE(second.ReadNextFrame());
        ASSERT_EQ(Frame(second), second_frames[frame - 1]) << frame;
    }
    second.Close(); // and the first knows nothing of it
    ASSERT_TRUE(first.GoToFrame(3));
    ASSERT_TRUE(first.ReadNextFrame());
    EXPECT_EQ(Frame(first), first_frames[3]);
}

TEST(TwoVorbisTracks, MayBeReadByTwoThreads) {
    const TemporaryFolder folder;
    const CString name = folder.Write("track.vrb", SweepTrack(4).Build());
    const std::vector<Bytes> frames = AllFrames(name);
    std::vector<Bytes> seen[2];
    {
        std::jthread threads[2];
        for (int i = 0; i < 2; ++i) {
            threads[i] = std::jthread([&, i] { seen[i] = AllFrames(name); });
        }
    }
    EXPECT_EQ(seen[0], frames);
    EXPECT_EQ(seen[1], frames);
}

TEST(VorbisStreams, ThatEndEarlyLeaveTheOlderBytesInTheLastFrames) {
    const ProgressRecorder progress;
    const TemporaryFolder folder;
    VorbisTrack track = SweepTrack(2);
    track.stream.clear();
    std::vector<float> sweep = Sweep(2, 22050);
    sweep.resize(2205 * 15 + 1000); // 15 frames and a bit
    track.stream = EncodedStream({sweep}, 22050);
    const CString name = folder.Write("track.vrb", track.Build());
    VorbisFilekel vorbis;
    ASSERT_TRUE(vorbis.OpenForRead(name, kHeaderLength));
    Bytes older;
    for (int frame = 0; frame < 15; ++frame) {
        ASSERT_TRUE(vorbis.ReadNextFrame());
        EXPECT_TRUE(vorbis.LastFrameComplete()) << frame;
        older = Frame(vorbis);
    }
    ASSERT_TRUE(vorbis.ReadNextFrame());
    EXPECT_FALSE(vorbis.LastFrameComplete());
    const Bytes cut = Frame(vorbis);
    EXPECT_NE(Bytes(cut.begin(), cut.begin() + 1000), Bytes(older.begin(), older.begin() + 1000));
    EXPECT_EQ(Bytes(cut.begin() + 1000, cut.end()), Bytes(older.begin() + 1000, older.end()));
    for (int frame = 16; frame < 20; ++frame) {
        ASSERT_TRUE(vorbis.ReadNextFrame());
        EXPECT_FALSE(vorbis.LastFrameComplete());
        EXPECT_EQ(Frame(vorbis), cut);
    }
    EXPECT_FALSE(vorbis.ReadNextFrame());

    // Back into what is there, also from a place that the stream never had.
    ASSERT_TRUE(vorbis.GoToFrame(0));
    ASSERT_TRUE(vorbis.GoToFrame(19));
    ASSERT_TRUE(vorbis.GoToFrame(14));
    ASSERT_TRUE(vorbis.ReadNextFrame());
    EXPECT_TRUE(vorbis.LastFrameComplete());
    EXPECT_EQ(Frame(vorbis), older);
}

TEST(VorbisStreams, OfLongSilencePassThroughTheBuffersWhole) {
    // A page of a few hundred bytes decodes to more than both buffers hold.
    const TemporaryFolder folder;
    VorbisTrack track;
    track.sample_rate = 48000;
    track.bytes_per_sample = 2;
    track.frames_per_second = 1;
    track.frame_bytes = 96000;
    track.frame_count = 60;
    track.stream = EncodedStream({std::vector<float>(48000 * 60, 0.0F)}, 48000);
    EXPECT_LT(track.stream.size(), 30000U);
    VorbisFilekel vorbis;
    ASSERT_TRUE(vorbis.OpenForRead(folder.Write("silence.vrb", track.Build()), kHeaderLength));
    for (int frame = 0; frame < 60; ++frame) {
        ASSERT_TRUE(vorbis.ReadNextFrame());
        ASSERT_TRUE(vorbis.LastFrameComplete()) << frame;
        ASSERT_EQ(Frame(vorbis), Bytes(96000, 0)) << frame;
    }
}

TEST(VorbisStreams, OfTwoChannelsAreInterleaved) {
    const TemporaryFolder folder;
    VorbisTrack track;
    track.channels = 2;
    track.frame_bytes = 4410;
    track.frame_count = 10;
    track.stream = EncodedStream({Tone(1, 22050, 500), std::vector<float>(22050, 0.0F)}, 22050);
    VorbisFilekel vorbis;
    ASSERT_TRUE(vorbis.OpenForRead(folder.Write("stereo.vrb", track.Build()), kHeaderLength));
    EXPECT_EQ(vorbis.StreamChannels(), 2U);
    ASSERT_TRUE(vorbis.GoToFrame(5));
    ASSERT_TRUE(vorbis.ReadNextFrame());
    int loudest[2] = {0, 0};
    for (std::size_t i = 0; i < 4410; ++i) {
        loudest[i % 2] = std::max(loudest[i % 2], std::abs(vorbis.FrameBuffer()[i] - 127));
    }
    EXPECT_GT(loudest[0], 50);
    EXPECT_LT(loudest[1], 10);
}

TEST(VorbisStreams, EndWithTheFirstOfAChain) {
    const TemporaryFolder folder;
    VorbisTrack track = SweepTrack(1);
    track.frame_count = 20;
    track.stream = Joined({track.stream, track.stream});
    VorbisFilekel vorbis;
    ASSERT_TRUE(vorbis.OpenForRead(folder.Write("chain.vrb", track.Build()), kHeaderLength));
    for (int frame = 0; frame < 20; ++frame) {
        ASSERT_TRUE(vorbis.ReadNextFrame());
        EXPECT_EQ(vorbis.LastFrameComplete(), frame < 10) << frame;
    }
}

} // namespace

} // namespace kelvo::test
