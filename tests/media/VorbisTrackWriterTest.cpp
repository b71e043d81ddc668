#include "media/VorbisTrackWriter.h"

#include "media/AudioFilekel.h"
#include "platform/base/file_calls.h"
#include "tests/media/MediaFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <numbers>

namespace kelvo::test {

namespace {

using testing::IsEmpty;

/// A tone of 400 Hz, half as loud as can be.
Bytes TonePcm(const AudioHeader& header, std::size_t samples) {
    Bytes pcm;
    for (std::size_t i = 0; i < samples; ++i) {
        const double value = 0.5 * std::sin(2.0 * std::numbers::pi * 400.0 *
                                            static_cast<double>(i) / header.SampleRate);
        if (header.BytesPerSample == 2) {
            Put16(pcm, static_cast<std::uint16_t>(static_cast<std::int16_t>(value * 32767)));
        } else {
            pcm.push_back(static_cast<std::uint8_t>(127 + std::lround(value * 127)));
        }
    }
    return pcm;
}

int SampleOf(const Bytes& pcm, std::size_t index, unsigned width) {
    if (width == 1) return (pcm[index] - 127) * 258;
    return static_cast<std::int16_t>(pcm[2 * index] | pcm[2 * index + 1] << 8U);
}

TEST(WrittenVorbisTracks, BeginWithTheirDescription) {
    const TemporaryFolder folder;
    const AudioHeader header = BuildWaveFormat(22050, 1, 10);
    VorbisTrackWriter writer;
    ASSERT_EQ(writer.Begin(folder.Name("track.vrb"), header), Error{});
    ASSERT_EQ(writer.Append(TonePcm(header, 2205 * 2 + 1)), Error{});
    ASSERT_EQ(writer.Finish(), Error{});
    const std::string signature = "VrbZuva40213380500000000000000";
    Bytes expected(signature.begin(), signature.end());
    for (const std::uint32_t field : {3, 22050, 1, 1, 10, 2205}) {
        Put32(expected, field);
    }
    const auto header_bytes = AudioHeaderBytes(header);
    expected.insert(expected.end(), header_bytes.begin(), header_bytes.end());
    const Bytes file = ReadFile(folder.Name("track.vrb"));
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 88), expected);
    EXPECT_EQ(std::string(file.begin() + 88, file.begin() + 92), "OggS");
}

TEST(WrittenVorbisTracks, SoundLikeWhatWentIn) {
    const TemporaryFolder folder;
    for (const AudioHeader& header : {BuildWaveFormat(22050, 1, 10), BuildWaveFormat(44100, 2, 5),
                                      BuildWaveFormat(11025, 2, 10), BuildWaveFormat(8000, 1, 1)}) {
        const std::size_t samples = header.SampleRate * 2 + 77; // the last frame is not full
        const Bytes pcm = TonePcm(header, samples);
        const CString name = folder.Name("track.kaf");
        VorbisTrackWriter writer;
        ASSERT_EQ(writer.Begin(name, header, Existing::Replace), Error{});
        // In pieces that cut samples and frames anywhere.
        for (std::size_t at = 0; at < pcm.size();) {
            const std::size_t piece = std::min<std::size_t>(1 + at % 4999, pcm.size() - at);
            ASSERT_EQ(writer.Append(ByteView{pcm}.subspan(at, piece)), Error{});
            at += piece;
        }
        ASSERT_EQ(writer.Finish(), Error{});

        AudioFilekel track;
        ASSERT_TRUE(track.OpenForRead(name));
        EXPECT_TRUE(SameForm(track.Header(), header));
        EXPECT_EQ(track.FrameCount(),
                  static_cast<int>((pcm.size() + header.FrameBytes - 1) / header.FrameBytes));
        Bytes decoded;
        int next = 0;
        std::uint32_t time = 0;
        while (track.ReadNextAudioFrame(next, time)) {
            EXPECT_TRUE(track.Vorbis()->LastFrameComplete()) << next;
            decoded.insert(decoded.end(), track.FrameData().begin(), track.FrameData().end());
        }
        ASSERT_GE(decoded.size(), pcm.size());
        double error = 0;
        for (std::size_t i = 0; i < samples; ++i) {
            const int difference = SampleOf(decoded, i, header.BytesPerSample) -
                                   SampleOf(pcm, i, header.BytesPerSample);
            error += static_cast<double>(difference) * difference / static_cast<double>(samples);
        }
        EXPECT_LT(std::sqrt(error), 800) << header.SampleRate; // of a tone 16384 high
    }
}

TEST(WrittenVorbisTracks, ComeOutTheSameEveryTime) {
    const TemporaryFolder folder;
    const AudioHeader header = BuildWaveFormat(22050, 1, 10);
    for (const char* const name : {"a.vrb", "b.vrb"}) {
        VorbisTrackWriter writer;
        ASSERT_EQ(writer.Begin(folder.Name(name), header), Error{});
        ASSERT_EQ(writer.Append(TonePcm(header, 22050)), Error{});
        ASSERT_EQ(writer.Finish(), Error{});
    }
    EXPECT_EQ(ReadFile(folder.Name("a.vrb")), ReadFile(folder.Name("b.vrb")));
}

TEST(WrittenVorbisTracks, MayHoldNothing) {
    const TemporaryFolder folder;
    VorbisTrackWriter writer;
    ASSERT_EQ(writer.Begin(folder.Name("empty.kaf"), BuildWaveFormat(22050, 2, 10)), Error{});
    ASSERT_EQ(writer.Finish(), Error{});
    AudioFilekel track;
    ASSERT_TRUE(track.OpenForRead(folder.Name("empty.kaf")));
    EXPECT_EQ(track.FrameCount(), 0);
}

TEST(UnfinishedVorbisTracks, LeaveNothingBehind) {
    const TemporaryFolder folder;
    const AudioHeader header = BuildWaveFormat(22050, 1, 10);
    {
        VorbisTrackWriter writer;
        ASSERT_EQ(writer.Begin(folder.Name("track.vrb"), header), Error{});
        ASSERT_EQ(writer.Append(TonePcm(header, 50000)), Error{});
    }
    VorbisTrackWriter writer;
    EXPECT_EQ(writer.Append(Bytes(10, 0)).fault, Fault::Missing);
    EXPECT_EQ(writer.Finish().fault, Fault::Missing);
    EXPECT_NE(writer.Begin(folder.Name("track.vrb"), BuildWaveFormat(22050, 3, 10)), Error{});
    ASSERT_EQ(writer.Begin(folder.Name("track.vrb"), header), Error{});
    platform::FileCalls full_disk = platform::SystemFileCalls();
    full_disk.pwrite = [](int, const void*, std::size_t, off_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    const platform::ScopedFileCalls scope{full_disk};
    Error error = writer.Append(TonePcm(header, 100000));
    if (error.fault == Fault::None) error = writer.Finish();
    EXPECT_EQ(error.fault, Fault::Unwritable);
    EXPECT_NE(writer.Finish(), Error{});
    EXPECT_THAT(folder.Files(), IsEmpty());
}

} // namespace

} // namespace kelvo::test
