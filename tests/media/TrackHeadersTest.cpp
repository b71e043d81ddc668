#include "media/AudioHeader.h"
#include "media/SyncNumbers.h"
#include "media/VideoHeader.h"
#include "tests/media/MediaFiles.h"

#include <gtest/gtest.h>

#include <functional>

namespace kelvo::test {

namespace {

TEST(SoundDescription, DerivesItsFieldsFromThreeValues) {
    const auto bytes = AudioHeaderBytes(BuildWaveFormat(22050, 1, 10));
    const Bytes expected{0x22, 0x56, 0, 0,    1,    0, 0, 0,    10,   0, 0, 0, 0x9D, 0x08, 0, 0, 1,
                         0,    1,    0, 0x22, 0x56, 0, 0, 0x22, 0x56, 0, 0, 1, 0,    8,    0, 0, 0};
    EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), expected);

    const AudioHeader wide = BuildWaveFormat(11025, 2, 5);
    EXPECT_EQ(wide.FrameBytes, 4410U);
    EXPECT_EQ(WORD{wide.Format.wBitsPerSample}, 16);
    EXPECT_EQ(DWORD{wide.Format.nAvgBytesPerSec}, 22050U);
    EXPECT_EQ(BuildWaveFormat(11025, 2, 10).FrameBytes, 2205U); // cuts samples in two
    EXPECT_EQ(BuildWaveFormat(11025, 2, 0).FrameBytes, 0U);
}

TEST(SoundDescription, SurvivesItsBytes) {
    const AudioHeader header = BuildWaveFormat(44100, 2, 10);
    const auto bytes = AudioHeaderBytes(header);
    const Result<AudioHeader> parsed = ParseAudioHeader(bytes);
    ASSERT_TRUE(parsed.Ok());
    EXPECT_TRUE(SameForm(parsed.Value(), header));
    EXPECT_EQ(AudioHeaderBytes(parsed.Value()), bytes);
    EXPECT_EQ(ParseAudioHeader(ByteView{bytes}.first(33)).Why().fault, Fault::EndsEarly);
}

TEST(HostileSoundDescriptions, AreFoundOutByTheFirstFieldThatBreaks) {
    struct Case {
        const char* name;
        std::function<void(AudioHeader&)> harm;
        Error error;
    };
    const Case cases[] = {
        {"Sound", [](AudioHeader&) {}, {}},
        {"NoRate", [](AudioHeader& h) { h.SampleRate = 0; }, {Fault::BadValue, 0}},
        {"HugeRate", [](AudioHeader& h) { h.SampleRate = 0xFFFFFFFF; }, {Fault::TooLarge, 0}},
        {"NoWidth", [](AudioHeader& h) { h.BytesPerSample = 0; }, {Fault::BadValue, 4}},
        {"ThreeBytes", [](AudioHeader& h) { h.BytesPerSample = 3; }, {Fault::BadValue, 4}},
        {"NoFrames", [](AudioHeader& h) { h.nFramesAlSec = 0; }, {Fault::BadValue, 8}},
        {"MoreFramesThanSamples",
         [](AudioHeader& h) { h.nFramesAlSec = 22051; },
         {Fault::BadValue, 8}},
        {"EmptyFrame", [](AudioHeader& h) { h.FrameBytes = 0; }, {Fault::Mismatch, 12}},
        {"NegativeFrame", [](AudioHeader& h) { h.FrameBytes = 0x80000000; }, {Fault::Mismatch, 12}},
        {"LongFrame", [](AudioHeader& h) { h.FrameBytes = 2206; }, {Fault::Mismatch, 12}},
    };
    for (const Case& c : cases) {
        AudioHeader header = BuildWaveFormat(22050, 1, 10);
        c.harm(header);
        EXPECT_EQ(CheckAudioHeader(header), c.error) << c.name;
    }
    AudioHeader stereo = BuildWaveFormat(22050, 1, 10);
    stereo.FrameBytes = 4410;
    EXPECT_EQ(CheckAudioHeader(stereo, 2), Error{});
}

TEST(WaveFormats, ThatContradictTheirTrackAreMadeAnew) {
    AudioHeader header = BuildWaveFormat(22050, 2, 10);
    header.Format.nChannels = 2;
    header.Format.nBlockAlign = 4; // stereo, and says so throughout
    const auto sound = AudioHeaderBytes(header);
    RepairWaveFormat(header);
    EXPECT_EQ(AudioHeaderBytes(header), sound);

    header.Format.nBlockAlign = 0;
    RepairWaveFormat(header);
    EXPECT_EQ(AudioHeaderBytes(header), AudioHeaderBytes(BuildWaveFormat(22050, 2, 10)));
}

/// 54 bytes of bitmap headers and the trailer: 3 x 2 pixels of 16 bits, 25 images a second.
Bytes SmallVideoHeader() {
    Bytes bytes = BuildBitmapHeaders(3, 2, 16);
    Put32(bytes, 54);
    Put32(bytes, 66);
    Put16(bytes, 25);
    Put16(bytes, 0x4000);
    return bytes;
}

TEST(PictureDescription, Is66BytesWithoutPalette) {
    const Bytes expected{'B', 'M', 70, 0, 0,  0, 0, 0, 0,  0, 54, 0,   0, 0,        // file
                         40,  0,   0,  0, 3,  0, 0, 0, 2,  0, 0,  0,   1, 0, 16, 0, // info
                         0,   0,   0,  0, 16, 0, 0, 0, 0,  0, 0,  0,   0, 0, 0,  0, //
                         0,   0,   0,  0, 0,  0, 0, 0,                              //
                         54,  0,   0,  0, 66, 0, 0, 0, 25, 0, 0,  0x40};            // trailer
    EXPECT_EQ(SmallVideoHeader(), expected);
    const Result<VideoHeader> header = ParseVideoHeader(expected);
    ASSERT_TRUE(header.Ok());
    EXPECT_EQ(LONG{header.Value().bitmap.biWidth}, 3);
    EXPECT_EQ(header.Value().nImgAlSec, 25);
    EXPECT_EQ(header.Value().VideoFlags, kScannedFlag);
    EXPECT_EQ(CheckVideoHeader(header.Value(), 66, 16), Error{});
}

TEST(PictureDescription, IsReadFromItsEndWhereAPaletteLiesBetween) {
    Bytes bytes = BuildBitmapHeaders(3, 2, 16);
    Set32(bytes, 46, 2);
    bytes.resize(54 + 8);
    Put32(bytes, 62);
    Put32(bytes, 74);
    Put16(bytes, 0xFFFF);
    Put16(bytes, 0);
    const Result<VideoHeader> header = ParseVideoHeader(bytes);
    ASSERT_TRUE(header.Ok());
    EXPECT_EQ(header.Value().nImgAlSec, -1);
    EXPECT_EQ(CheckVideoHeader(header.Value(), bytes.size(), 16), Error{});
}

TEST(SyncNumbers, GroupTheImagesOfEachAudioFrame) {
    const SyncLink even = SyncLink::Of(25, 5);
    const std::uint32_t expected[] = {0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 2};
    for (int image = 0; image < 11; ++image) {
        EXPECT_EQ(even.NumberOf(image), expected[image]) << image;
    }
    const SyncLink late = SyncLink::Of(25, 5, -3);
    for (int image = 0; image < 8; ++image) {
        EXPECT_EQ(late.NumberOf(image), 0U) << image;
    }
    EXPECT_EQ(late.NumberOf(8), 1U);
    EXPECT_TRUE(SyncLink::IsValid(25, 5, -50, 100));
    EXPECT_FALSE(SyncLink::IsValid(25, 5, -51, 100));
    EXPECT_FALSE(SyncLink::IsValid(25, 10, 0, 100)); // two and a half images
    EXPECT_FALSE(SyncLink::IsValid(5, 10, 0, 100));
    EXPECT_FALSE(SyncLink::IsValid(25, 0, 0, 100));
}

TEST(HostilePictureDescriptions, AreFoundOutByTheFirstFieldThatBreaks) {
    struct Case {
        const char* name;
        std::function<void(Bytes&)> harm;
        Error error;
    };
    const Case cases[] = {
        {"ForeignTrailer", [](Bytes& b) { Set32(b, 58, 67); }, {Fault::Mismatch, 58}},
        {"SmallInfoHeader", [](Bytes& b) { Set32(b, 14, 12); }, {Fault::BadValue, 14}},
        {"NoWidth", [](Bytes& b) { Set32(b, 18, 0); }, {Fault::BadValue, 18}},
        {"NegativeWidth", [](Bytes& b) { Set32(b, 18, 0xFFFFFFFD); }, {Fault::BadValue, 18}},
        {"HugeWidth", [](Bytes& b) { Set32(b, 18, 32768); }, {Fault::BadValue, 18}},
        {"TopDown", [](Bytes& b) { Set32(b, 22, 0xFFFFFFFE); }, {Fault::BadValue, 22}},
        {"LowestHeight", [](Bytes& b) { Set32(b, 22, 0x80000000); }, {Fault::BadValue, 22}},
        {"EightBits", [](Bytes& b) { Set16(b, 28, 8); }, {Fault::BadValue, 28}},
        {"Compressed", [](Bytes& b) { Set32(b, 30, 1); }, {Fault::BadValue, 30}},
        {"PaletteThatIsNotThere", [](Bytes& b) { Set32(b, 46, 1); }, {Fault::TooLarge, 46}},
        {"HugePalette", [](Bytes& b) { Set32(b, 46, 0x40000001); }, {Fault::TooLarge, 46}},
        {"WiderThanItsRecord", [](Bytes& b) { Set32(b, 18, 5); }, {Fault::Mismatch, 18}},
        {"HigherThanItsRecord", [](Bytes& b) { Set32(b, 22, 3); }, {Fault::Mismatch, 18}},
        {"NoSizeWhereNobodyNeedsIt", [](Bytes& b) { Set32(b, 34, 0); }, {}},
    };
    for (const Case& c : cases) {
        Bytes bytes = SmallVideoHeader();
        c.harm(bytes);
        const Result<VideoHeader> header = ParseVideoHeader(bytes);
        ASSERT_TRUE(header.Ok()) << c.name;
        EXPECT_EQ(CheckVideoHeader(header.Value(), bytes.size(), 16), c.error) << c.name;
    }
    EXPECT_EQ(ParseVideoHeader(ByteView{SmallVideoHeader()}.first(65)).Why().fault,
              Fault::EndsEarly);
}

} // namespace

} // namespace kelvo::test
