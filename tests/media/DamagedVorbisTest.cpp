// Vorbis tracks whose stream or description is damaged, cut off or made up to do harm.

#include "media/AudioFilekel.h"
#include "media/VorbisFilekel.h"
#include "media/VorbisSetupLimits.h"
#include "platform/base/message_boxes.h"
#include "tests/media/MediaFiles.h"
#include "tests/media/OggStreams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ogg/ogg.h>

#include <bit>
#include <climits>

namespace kelvo::test {

namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;

constexpr std::uint32_t kHeaderLength = 34;
constexpr std::size_t kStreamOffset = 88;

TEST(DamagedVorbisStreams, AreReportedOnceAndPlayOn) {
    const TemporaryFolder folder;
    VorbisTrack track = SweepTrack(60);
    const std::vector<std::size_t> pages = PageLengths(track.stream);
    ASSERT_GT(pages.size(), 8U);
    // A byte is wrong in each of two pages of sound: both are lost.
    track.stream[pages[0] + pages[1] + pages[2] + 100] ^= 0x55;
    track.stream[track.stream.size() - pages.back() - 100] ^= 0x55;
    const MessageBoxRecorder boxes;
    VorbisFilekel vorbis;
    ASSERT_TRUE(vorbis.OpenForRead(folder.Write("damaged.vrb", track.Build()), kHeaderLength));
    int complete = 0;
    while (vorbis.ReadNextFrame()) {
        complete += vorbis.LastFrameComplete() ? 1 : 0;
    }
    EXPECT_THAT(boxes.Texts(), ElementsAre("Corrupt or missing data in bitstream; continuing..."));
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
    EXPECT_TRUE(vorbis.StreamDamaged());
    EXPECT_EQ(complete, 600); // what is lost is silence, and the rest keeps its place
}

struct SetUpCase {
    const char* name;
    Bytes stream;
    std::vector<std::string> boxes;
};

TEST(BrokenVorbisStreams, SayWhatIsWrongAndOpenSilent) {
    const Bytes good = EncodedStream({Tone(1, 22050, 500)}, 22050);
    const std::vector<std::size_t> pages = PageLengths(good);
    const Bytes first(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(pages[0]));
    Bytes broken_comment(good.begin(),
                         good.begin() + static_cast<std::ptrdiff_t>(pages[0] + pages[1]));
    const std::size_t second_page = pages[0];
    broken_comment[second_page + 27 + broken_comment[second_page + 26]] = 0x77; // packet type
    Bytes second(broken_comment.begin() + static_cast<std::ptrdiff_t>(second_page),
                 broken_comment.end());
    second = WithHeaderByte(second, 5, second[5]); // checksum
    const std::string not_ogg = "Input does not appear to be an Ogg bitstream";
    const SetUpCase cases[] = {
        {"Nothing", {}, {}},
        {"ShorterThanAStep", Bytes(4095, 'x'), {}},
        {"NoOgg", Bytes(5000, 'x'), {not_ogg}},
        {"ForeignVersion",
         WithHeaderByte(first, 4, 1),
         {"Error reading first page of Ogg bitstream data"}},
        {"NoWholePacket", FirstPageWithoutEnd(), {"Error reading initial header packet"}},
        {"AnotherCodec",
         FirstPage(Bytes(60, 'y')),
         {"This Ogg bitstream does not contain Vorbis audio data"}},
        {"BrokenComment", Joined({first, second}), {"Corrupt secondary header.  Exiting"}},
        {"OnlyTheFirstHeader", first, {"End of file before finding all Vorbis headers!"}},
    };
    const TemporaryFolder folder;
    for (const SetUpCase& c : cases) {
        const MessageBoxRecorder boxes;
        VorbisTrack track;
        track.stream = c.stream;
        VorbisFilekel vorbis;
        ASSERT_TRUE(vorbis.OpenForRead(folder.Write("broken.vrb", track.Build()), kHeaderLength))
            << c.name;
        EXPECT_EQ(boxes.Texts(), c.boxes) << c.name;
        EXPECT_FALSE(vorbis.HasStream()) << c.name;
        ASSERT_TRUE(vorbis.GoToFrame(8)) << c.name;
        EXPECT_TRUE(vorbis.ReadNextFrame()) << c.name;
        EXPECT_FALSE(vorbis.LastFrameComplete()) << c.name;
        EXPECT_EQ(Bytes(vorbis.FrameBuffer().begin(), vorbis.FrameBuffer().end()), Bytes(2205, 127))
            << c.name; // silence
        EXPECT_TRUE(vorbis.ReadNextFrame()) << c.name;
        EXPECT_FALSE(vorbis.ReadNextFrame()) << c.name;
    }
}

TEST(HostileVorbisDescriptions, AreRefused) {
    struct Case {
        const char* name;
        std::size_t offset;
        std::uint32_t value;
    };
    const Case cases[] = {
        {"NoRate", 34, 0},
        {"HugeRate", 34, 0xFFFFFFFF},
        {"NoChannel", 38, 0},
        {"ManyChannels", 38, 256},
        {"NoWidth", 42, 0},
        {"ThreeBytes", 42, 3},
        {"NoFrames", 46, 0},
        {"EmptyFrame", 50, 0},
        {"LongFrame", 50, 2206},
        {"HugeFrame", 50, 0xFFFFFFFF},
        {"OtherHeader", 54 + 12, 4410},
        {"HeaderWidth", 54 + 4, 2},
        {"HeaderWithoutFrames", 54 + 8, 0},
    };
    const TemporaryFolder folder;
    const Bytes good = SweepTrack(1).Build();
    for (const Case& c : cases) {
        Bytes bytes = good;
        Set32(bytes, c.offset, c.value);
        const CString name = folder.Write("hostile.kaf", bytes);
        const MessageBoxRecorder boxes;
        AudioFilekel track;
        EXPECT_FALSE(track.OpenForRead(name)) << c.name;
        EXPECT_FALSE(track.IsTrackOpen()) << c.name;
        EXPECT_NE(track.HeaderError().fault, Fault::None) << c.name;
        ASSERT_THAT(boxes.Texts(), ElementsAre("Impossibile aprire il VorbisFilekel!")) << c.name;
        EXPECT_EQ(boxes.Boxes()[0].caption, "AudioFilekel::OpenForRead()");
    }
    for (const std::size_t length : {std::size_t{30}, std::size_t{53}, kStreamOffset - 1}) {
        const MessageBoxRecorder boxes;
        AudioFilekel track;
        EXPECT_FALSE(track.OpenForRead(folder.Write(
            "cut.kaf", Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)))));
        EXPECT_EQ(boxes.Boxes().size(), 1U);
    }
}

TEST(HostileVorbisDescriptions, MayPromiseAnyNumberOfFrames) {
    const ProgressRecorder progress;
    const TemporaryFolder folder;
    VorbisTrack track = SweepTrack(1);
    track.frame_count = 0xFFFFFFFF;
    VorbisFilekel vorbis;
    ASSERT_TRUE(vorbis.OpenForRead(folder.Write("endless.vrb", track.Build()), kHeaderLength));
    EXPECT_EQ(vorbis.FrameCount(), INT_MAX);
    ASSERT_TRUE(vorbis.GoToFrame(INT_MAX - 1));
    EXPECT_TRUE(vorbis.ReadNextFrame());
    EXPECT_FALSE(vorbis.LastFrameComplete());
    EXPECT_FALSE(vorbis.ReadNextFrame());
}

/// A set-up packet that begins with one ordered codebook, all of whose entries are of one length.
Bytes CodebookPacket(std::uint32_t dimensions, std::uint32_t entries) {
    oggpack_buffer bits{};
    oggpack_writeinit(&bits);
    for (const char letter : std::string{"\x05vorbis"}) {
        oggpack_write(&bits, static_cast<unsigned char>(letter), 8);
    }
    oggpack_write(&bits, 0, 8); // one codebook
    oggpack_write(&bits, 0x564342, 24);
    oggpack_write(&bits, dimensions, 16);
    oggpack_write(&bits, entries, 24);
    oggpack_write(&bits, 1, 1); // ordered
    oggpack_write(&bits, 22, 5);
    oggpack_write(&bits, entries, static_cast<int>(std::bit_width(entries)));
    oggpack_write(&bits, 0, 4); // no values
    oggpack_write(&bits, 0, 32);
    Bytes packet(bits.buffer, bits.buffer + oggpack_bytes(&bits));
    oggpack_writeclear(&bits);
    return packet;
}

TEST(VorbisCodebooks, AreRefusedWhenAFewBytesAskForGigabytes) {
    EXPECT_TRUE(vorbis_setup::TablesStaySmall(CodebookPacket(1, 100)));
    EXPECT_FALSE(vorbis_setup::TablesStaySmall(CodebookPacket(1, 1U << 23U)));
    EXPECT_FALSE(vorbis_setup::TablesStaySmall(CodebookPacket(1, 20000)));
    EXPECT_FALSE(vorbis_setup::TablesStaySmall(CodebookPacket(0, 100))); // no end of searching
    EXPECT_FALSE(vorbis_setup::TablesStaySmall({}));
    const Bytes packet = CodebookPacket(1, 100);
    EXPECT_FALSE(vorbis_setup::TablesStaySmall(ByteView{packet}.first(12)));
}

TEST(VorbisCodebooks, OfARealEncoderAreFarBelowTheLimits) {
    for (const std::uint32_t rate : {8000U, 22050U, 44100U, 96000U}) {
        for (const std::size_t channels : {1U, 2U}) {
            const std::vector<std::vector<float>> sound(channels, Tone(0.1, rate, 500));
            const auto totals =
                vorbis_setup::CountCodebooks(SetupPacket(EncodedStream(sound, rate)));
            EXPECT_TRUE(totals.readable) << rate;
            EXPECT_LT(totals.entries, vorbis_setup::kMostEntries / 3) << rate;
            EXPECT_LT(totals.largest, vorbis_setup::kMostEntriesOfOne / 2) << rate;
            EXPECT_LT(totals.values, vorbis_setup::kMostValues / 4) << rate;
        }
    }
}

} // namespace

} // namespace kelvo::test
