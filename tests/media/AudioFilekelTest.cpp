#include "media/AudioFilekel.h"

#include "platform/base/message_boxes.h"
#include "tests/media/MediaFiles.h"
#include "tests/media/OggStreams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace kelvo::test {

namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;
using testing::IsEmpty;

Bytes FrameOf(std::uint8_t value, std::size_t length) {
    return Bytes(length, value);
}

Bytes Frame(const AudioFilekel& track) {
    return Bytes(track.FrameData().begin(), track.FrameData().end());
}

/// Three raw frames of 8000 one-byte samples a second, ten frames a second.
RawContainer SmallTrack() {
    RawContainer container;
    const auto header = AudioHeaderBytes(BuildWaveFormat(8000, 1, 10));
    container.user_header.assign(header.begin(), header.end());
    for (std::uint8_t i = 0; i < 3; ++i) {
        container.records.push_back(FrameOf(static_cast<std::uint8_t>(10 + i), 800));
        Bytes side(32, 0);
        side[0] = i;
        side[3] = 0xF0;
        side[31] = 77;
        container.sides.push_back(side);
    }
    return container;
}

TEST(SoundTracks, AreWrittenAndReadFrameByFrame) {
    const TemporaryFolder folder;
    const CString name = folder.Name("track.kaf");
    for (const int type : {99, 16, 15}) {
        AudioFilekel writer;
        ASSERT_TRUE(writer.Create(name, type, 8000, 1, 10)) << type;
        EXPECT_EQ(writer.TrackMode(), 4);
        for (std::uint8_t i = 0; i < 3; ++i) {
            ASSERT_TRUE(writer.AppendAudioFrame(FrameOf(static_cast<std::uint8_t>(100 + i), 800),
                                                1000U + i));
        }
        ASSERT_TRUE(writer.Close());

        AudioFilekel track;
        ASSERT_TRUE(track.OpenForRead(name)) << type;
        EXPECT_EQ(track.FrameCount(), 3);
        EXPECT_EQ(track.TrackMode(), 1);
        EXPECT_EQ(track.SampleRate(), 8000U);
        EXPECT_EQ(track.FrameBytes(), 800U);
        EXPECT_EQ(DWORD{track.GetWaveFormat()->nSamplesPerSec}, 8000U);
        EXPECT_EQ(track.SideLength(), 32U);
        EXPECT_EQ(track.KeyInterval(), 999999U);
        EXPECT_EQ(track.CreatorValue(), 1U);
        int next = -1;
        std::uint32_t time = 0;
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(track.ReadNextAudioFrame(next, time));
            EXPECT_EQ(next, i + 1); // one more than what was read
            EXPECT_EQ(time, 1000U + static_cast<unsigned>(i));
            EXPECT_EQ(Frame(track), FrameOf(static_cast<std::uint8_t>(100 + i), 800)) << type;
        }
        EXPECT_FALSE(track.ReadNextAudioFrame(next, time));
        EXPECT_EQ(next, 1410065407);
        EXPECT_EQ(time, 1002U); // left alone
        EXPECT_FALSE(track.ReadAudioFrame(3, time));
        EXPECT_FALSE(track.ReadAudioFrame(-1, time));
        EXPECT_EQ(time, 1002U);
        ASSERT_TRUE(track.ReadAudioFrame(0, time));
        EXPECT_EQ(time, 1000U);
        EXPECT_EQ(track.CurrentAudioFrame(), 1);
        ASSERT_TRUE(track.GoToAudioFrame(2));
        EXPECT_EQ(track.CurrentAudioFrame(), 2);
        EXPECT_TRUE(track.Close());
        EXPECT_FALSE(track.IsTrackOpen());
        EXPECT_FALSE(track.ReadNextAudioFrame(next, time));
    }
}

TEST(NewSoundTracks, AreNeverOfTheVorbisType) {
    const MessageBoxRecorder boxes;
    const TemporaryFolder folder;
    AudioFilekel track;
    EXPECT_FALSE(track.Create(folder.Name("track.kaf"), 69, 22050, 1, 10));
    EXPECT_THAT(
        boxes.Texts(),
        ElementsAre("Per creare un Vorbis File occorre partire da un AudioFilekel esistente!"));
    EXPECT_FALSE(track.Create(folder.Name("track.kaf"), 99, 22050, 3, 10));
    EXPECT_FALSE(track.Create(folder.Name("track.kaf"), 99, 22050, 1, 0));
    EXPECT_THAT(folder.Files(), IsEmpty());
}

TEST(SoundTracks, OpenForEditingOnlyWhenTheyAreRaw) {
    const MessageBoxRecorder boxes;
    const TemporaryFolder folder;
    const CString raw = folder.Write("raw.kaf", SmallTrack().Build());
    AudioFilekel track;
    ASSERT_TRUE(track.OpenExisting(raw));
    EXPECT_EQ(track.TrackMode(), 3);
    ASSERT_TRUE(track.ReplaceAudioFrame(1, FrameOf(99, 800)));
    EXPECT_FALSE(track.ReplaceAudioFrame(3, FrameOf(99, 800)));
    EXPECT_FALSE(track.ReplaceAudioFrame(-1, FrameOf(99, 800)));
    ASSERT_TRUE(track.Close());
    // Nothing but the samples has changed.
    RawContainer edited = SmallTrack();
    edited.records[1] = FrameOf(99, 800);
    EXPECT_EQ(ReadFile(raw), edited.Build());

    AudioFilekel coded;
    ASSERT_TRUE(coded.Create(folder.Name("coded.kaf"), 16, 8000, 1, 10));
    ASSERT_TRUE(coded.AppendAudioFrame(FrameOf(1, 800), 0));
    ASSERT_TRUE(coded.Close());
    EXPECT_FALSE(coded.OpenExisting(folder.Name("coded.kaf")));
    EXPECT_FALSE(coded.IsTrackOpen());
    EXPECT_THAT(boxes.Boxes(), IsEmpty());
}

TEST(SoundTracksInVorbisForm, AreReadLikeAnyOtherAndRefuseToBeWritten) {
    const TemporaryFolder folder;
    VorbisTrack vorbis;
    vorbis.frame_count = 5;
    vorbis.stream = EncodedStream({std::vector<float>(2205 * 5, 0.25F)}, 22050);
    const CString name = folder.Write("track.kaf", vorbis.Build()); // whatever its name
    const MessageBoxRecorder boxes;
    AudioFilekel track;
    ASSERT_TRUE(track.OpenForRead(name));
    EXPECT_TRUE(track.IsVorbis());
    EXPECT_EQ(track.CurrentType(), 69);
    EXPECT_EQ(track.TrackMode(), 1);
    EXPECT_EQ(track.FrameCount(), 5);
    EXPECT_EQ(track.FrameBytes(), 2205U);
    int next = -1;
    std::uint32_t time = 9;
    ASSERT_TRUE(track.ReadNextAudioFrame(next, time));
    EXPECT_EQ(next, 1);
    EXPECT_EQ(time, 0U);
    const Bytes first = Frame(track);
    time = 9;
    ASSERT_TRUE(track.ReadAudioFrame(0, time));
    EXPECT_EQ(time, 9U); // not written
    EXPECT_EQ(Frame(track), first);
    ASSERT_TRUE(track.GoToAudioFrame(4));
    ASSERT_TRUE(track.ReadNextAudioFrame(next, time));
    EXPECT_FALSE(track.ReadNextAudioFrame(next, time));
    EXPECT_EQ(next, NoFrameIndex);
    EXPECT_THAT(boxes.Boxes(), IsEmpty());

    EXPECT_FALSE(track.AppendAudioFrame(first, 0));
    EXPECT_FALSE(track.ReplaceAudioFrame(0, first));
    EXPECT_TRUE(track.IsTrackOpen());
    ASSERT_TRUE(track.Close());
    EXPECT_FALSE(track.IsVorbis());
    EXPECT_FALSE(track.OpenExisting(name));
    EXPECT_THAT(boxes.Texts(),
                ElementsAre("Operazione non consentita sui file Vorbis!",
                            "Operazione non consentita sui file Vorbis!",
                            "Impossibile aprire un VorbisFilekel in lettura/scrittura!"));
    EXPECT_EQ(boxes.Boxes()[2].caption, "AudioFilekel::OpenExisting()");
}

TEST(FilmSound, ComesFromItsOwnWindow) {
    const MessageBoxRecorder boxes;
    const TemporaryFolder folder;
    VorbisTrack vorbis;
    vorbis.frame_count = 5;
    vorbis.stream = EncodedStream({std::vector<float>(2205 * 5, 0.25F)}, 22050);
    AudioFilekel track;
    ASSERT_TRUE(
        track.OpenForRead(folder.Write("a.kva", FilmOf(SmallTrack().Build(), vorbis.Build()))));
    EXPECT_FALSE(track.IsVorbis());
    EXPECT_EQ(track.FrameCount(), 3);
    ASSERT_TRUE(track.Close());
    ASSERT_TRUE(
        track.OpenForRead(folder.Write("b.KVA", FilmOf(vorbis.Build(), SmallTrack().Build()))));
    EXPECT_TRUE(track.IsVorbis());
    int next = 0;
    std::uint32_t time = 0;
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(track.ReadNextAudioFrame(next, time));
        EXPECT_TRUE(track.Vorbis()->LastFrameComplete()); // stops at the window's end, not before
    }
    ASSERT_TRUE(track.Close());
    EXPECT_FALSE(track.OpenForRead(folder.Write("c.kva", FilmOf({}, SmallTrack().Build()))));
    EXPECT_FALSE(track.OpenForRead(folder.Name("missing.kva")));
    EXPECT_THAT(boxes.Boxes(), IsEmpty());
}

TEST(HostileSoundTracks, AreRefusedWithoutABox) {
    const MessageBoxRecorder boxes;
    const TemporaryFolder folder;
    struct Case {
        const char* name;
        std::function<void(RawContainer&)> harm;
    };
    const Case cases[] = {
        {"NoHeader", [](RawContainer& c) { c.user_header.clear(); }},
        {"ShortHeader", [](RawContainer& c) { c.user_header.resize(33); }},
        {"EmptyFrames", [](RawContainer& c) { Set32(c.user_header, 12, 0); }},
        {"HugeFrames", [](RawContainer& c) { Set32(c.user_header, 12, 0x7FFFFFFF); }},
        {"NegativeFrames", [](RawContainer& c) { Set32(c.user_header, 12, 0xFFFFFFFF); }},
        {"NoFramesPerSecond", [](RawContainer& c) { Set32(c.user_header, 8, 0); }},
        {"NoSampleWidth", [](RawContainer& c) { Set32(c.user_header, 4, 0); }},
        {"WideSamples", [](RawContainer& c) { Set32(c.user_header, 4, 4); }},
        {"OtherRecords",
         [](RawContainer& c) {
             for (Bytes& record : c.records) {
                 record.resize(799);
             }
         }},
    };
    for (const Case& c : cases) {
        RawContainer container = SmallTrack();
        c.harm(container);
        AudioFilekel track;
        EXPECT_FALSE(track.OpenForRead(folder.Write("hostile.kaf", container.Build()))) << c.name;
        EXPECT_FALSE(track.IsTrackOpen()) << c.name;
        EXPECT_NE(track.HeaderError().fault, Fault::None) << c.name;
    }
    RawContainer odd_format = SmallTrack();
    odd_format.user_header[16 + 12] = 0; // nBlockAlign
    AudioFilekel track;
    ASSERT_TRUE(track.OpenForRead(folder.Write("odd.kaf", odd_format.Build())));
    EXPECT_EQ(WORD{track.GetWaveFormat()->nBlockAlign}, 1);
    EXPECT_THAT(boxes.Boxes(), IsEmpty());
}

TEST(FramesOfOddLength, BeginInsideASampleEverySecondTime) {
    const TemporaryFolder folder;
    AudioFilekel odd;
    ASSERT_TRUE(odd.Create(folder.Name("odd.kaf"), 99, 11025, 2, 10));
    EXPECT_EQ(odd.FrameBytes(), 2205U);
    EXPECT_FALSE(odd.StartsInsideSample(0));
    EXPECT_TRUE(odd.StartsInsideSample(1));
    EXPECT_FALSE(odd.StartsInsideSample(2));
    AudioFilekel narrow;
    ASSERT_TRUE(narrow.Create(folder.Name("narrow.kaf"), 99, 22050, 1, 10));
    EXPECT_FALSE(narrow.StartsInsideSample(1));
}

} // namespace

} // namespace kelvo::test
