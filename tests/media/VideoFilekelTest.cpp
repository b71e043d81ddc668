#include "media/VideoFilekel.h"

#include "media/NewCBitmaplum.h"
#include "platform/base/message_boxes.h"
#include "tests/media/MediaFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

namespace kelvo::test {

namespace {

using platform::MessageBoxRecorder;
using testing::IsEmpty;

constexpr std::int32_t kWidth = 4;
constexpr std::int32_t kHeight = 3;
constexpr std::uint32_t kPictureBytes = 8 * 3;

/// Every pixel of image i is i.
Bytes Picture(int i) {
    Bytes pixels;
    for (int pixel = 0; pixel < kWidth * kHeight; ++pixel) {
        Put16(pixels, static_cast<std::uint16_t>(i));
    }
    return pixels;
}

/// @param count  images; image i carries the SyncNumber i / 2 and the time 100 i
CString WriteTrack(const TemporaryFolder& folder, const std::string& file, int type, int count,
                   int images_per_second = 10) {
    const CString name = folder.Name(file);
    VideoFilekel track;
    EXPECT_TRUE(track.Create(name, 54, kPictureBytes, type, images_per_second, 4, true));
    EXPECT_TRUE(track.WriteVideoHeader(BuildBitmapHeaders(kWidth, kHeight, 16)));
    for (int i = 0; i < count; ++i) {
        EXPECT_TRUE(track.AppendFrame(Picture(i), static_cast<std::uint32_t>(i / 2),
                                      static_cast<std::uint32_t>(i * 100)));
    }
    EXPECT_TRUE(track.Close());
    return name;
}

Bytes Bits(const VideoFilekel& track) {
    return Bytes(track.FrameBits().begin(), track.FrameBits().end());
}

TEST(PictureTracks, AreWrittenAndReadImageByImage) {
    const TemporaryFolder folder;
    for (const int type : {99, 2, 7, 8, 9}) {
        const CString name = WriteTrack(folder, "track.kvf", type, 10, 25);
        VideoFilekel track;
        ASSERT_TRUE(track.OpenForRead(name)) << type;
        EXPECT_EQ(track.UserHeaderSize(), 66U);
        EXPECT_EQ(track.SideLength(), 108U);
        EXPECT_EQ(track.CreatorValue(), 1U);
        EXPECT_EQ(track.Width(), kWidth);
        EXPECT_EQ(track.Height(), kHeight);
        EXPECT_EQ(track.BitCount(), 16);
        EXPECT_EQ(track.FrameCount(), 10);
        EXPECT_EQ(track.PeriodMs(), 40);
        EXPECT_TRUE(track.IsScanned());
        EXPECT_EQ(track.IsSequentialOnly(), type == 7 || type == 8) << type;
        FrameSide side;
        for (int i = 0; i < 10; ++i) {
            ASSERT_TRUE(track.ReadNextFrame(side)) << type;
            EXPECT_EQ(side, (FrameSide{static_cast<std::uint32_t>(i / 2), 0,
                                       static_cast<std::uint32_t>(i * 100)}));
            EXPECT_EQ(Bits(track), Picture(i)) << type << " " << i;
            EXPECT_EQ(track.CurrentFrame(), i + 1);
        }
        const FrameSide last = side;
        EXPECT_FALSE(track.ReadNextFrame(side));
        EXPECT_FALSE(track.ReadFrame(10, side));
        EXPECT_EQ(side, last);
        for (const int i : {9, 3, 8, 0, 5}) {
            ASSERT_TRUE(track.ReadFrame(i, side)) << type;
            EXPECT_EQ(Bits(track), Picture(i)) << type << " " << i;
        }
        EXPECT_TRUE(track.GoToRecord(-4));
        EXPECT_EQ(track.CurrentFrame(), 0);
        EXPECT_TRUE(track.GoToRecord(99));
        EXPECT_EQ(track.CurrentFrame(), 9);
        ASSERT_TRUE(track.ReadNextFrame(side));
        EXPECT_EQ(Bits(track), Picture(9)) << type;
    }
}

TEST(PictureTracks, TellTheSyncNumberWithoutDecoding) {
    const TemporaryFolder folder;
    VideoFilekel track;
    EXPECT_EQ(track.CurrentSyncNumber(), 0U);
    ASSERT_TRUE(track.OpenForRead(WriteTrack(folder, "track.kvf", 8, 10)));
    FrameSide side;
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(track.CurrentSyncNumber(), static_cast<std::uint32_t>(i / 2));
        ASSERT_TRUE(track.ReadNextFrame(side)); // the file's position is where it was
        EXPECT_EQ(Bits(track), Picture(i));
        EXPECT_EQ(side.SyncNumber, static_cast<std::uint32_t>(i / 2));
    }
    EXPECT_EQ(track.CurrentSyncNumber(), 4U); // past the end: the last one's
    EXPECT_EQ(Bits(track), Picture(9));

    VideoFilekel empty;
    ASSERT_TRUE(empty.OpenForRead(WriteTrack(folder, "empty.kvf", 8, 0)));
    EXPECT_EQ(empty.CurrentSyncNumber(), 0U);
    EXPECT_FALSE(empty.ReadNextFrame(side));
}

TEST(PictureTracks, GiveTheirImageAsABitmap) {
    const TemporaryFolder folder;
    VideoFilekel track;
    EXPECT_EQ(track.GetBitmapInfo(), nullptr);
    ASSERT_TRUE(track.OpenForRead(WriteTrack(folder, "track.kvf", 9, 2)));
    FrameSide side;
    ASSERT_TRUE(track.ReadFrame(1, side));
    EXPECT_EQ(LONG{track.GetBitmapInfo()->bmiHeader.biWidth}, kWidth);
    EXPECT_EQ(track.GetFrameBits(), track.FrameBits().data());
    NewCBitmaplum bitmap;
    ASSERT_TRUE(bitmap.SetByInfoAndBits(track.BitmapInfoBytes(), track.FrameBits()));
    EXPECT_EQ(bitmap.Height(), kHeight);
    EXPECT_EQ(Bytes(bitmap.Pixels(), bitmap.Pixels() + bitmap.PixelLength()), Picture(1));
}

TEST(PictureTracks, ThatAreTooSlowPlayAtOneImageASecond) {
    const TemporaryFolder folder;
    struct Rate {
        int stored, guarded, period;
    };
    for (const Rate rate : {Rate{0, 1, 1000}, Rate{-1, 1, 1000}, Rate{1, 1, 1000}, Rate{30, 30, 33},
                            Rate{32767, 32767, 0}}) {
        VideoFilekel track;
        ASSERT_TRUE(track.OpenForRead(WriteTrack(folder, "track.kvf", 99, 1, rate.stored)));
        EXPECT_EQ(track.nImgAlSec(), rate.stored);
        EXPECT_EQ(track.ImagesPerSecond(), rate.guarded);
        EXPECT_EQ(track.PeriodMs(), rate.period);
    }
}

TEST(NewPictureTracks, RefuseWhatTheyWereNotMadeFor) {
    const TemporaryFolder folder;
    VideoFilekel track;
    EXPECT_FALSE(track.Create(folder.Name("a.kvf"), 53, 24, 99, 10, 1, false));
    EXPECT_FALSE(track.Create(folder.Name("nowhere/a.kvf"), 54, 24, 99, 10, 1, false));
    EXPECT_EQ(track.GetBitmapInfo(), nullptr);
    EXPECT_FALSE(track.WriteVideoHeader(BuildBitmapHeaders(4, 3, 16)));
    ASSERT_TRUE(track.Create(folder.Name("a.kvf"), 54, 24, 99, 10, 1, false));
    EXPECT_FALSE(track.WriteVideoHeader(Bytes(53, 0)));
    EXPECT_TRUE(track.Close());
    EXPECT_TRUE(track.Close()); // nothing is open
}

RawContainer SmallTrack() {
    RawContainer container;
    container.user_header = BuildBitmapHeaders(kWidth, kHeight, 16);
    Put32(container.user_header, 54);
    Put32(container.user_header, 66);
    Put16(container.user_header, 10);
    Put16(container.user_header, 0);
    container.records = {Picture(7), Picture(8)};
    container.sides = {Bytes(108, 1), Bytes(108, 2)};
    return container;
}

TEST(HostilePictureTracks, AreRefusedWithoutABox) {
    const MessageBoxRecorder boxes;
    const TemporaryFolder folder;
    struct Case {
        const char* name;
        std::function<void(RawContainer&)> harm;
    };
    const Case cases[] = {
        {"NoHeader", [](RawContainer& c) { c.user_header.clear(); }},
        {"SoundHeader", [](RawContainer& c) { c.user_header.resize(34); }},
        {"HeaderOf65", [](RawContainer& c) { c.user_header.erase(c.user_header.begin()); }},
        {"LongerThanItsTrailerSays",
         [](RawContainer& c) { c.user_header.insert(c.user_header.begin() + 54, 4, 0); }},
        {"TopDown", [](RawContainer& c) { Set32(c.user_header, 22, 0xFFFFFFFD); }},
        {"NoWidth", [](RawContainer& c) { Set32(c.user_header, 18, 0); }},
        {"BeyondItsRecord", [](RawContainer& c) { Set32(c.user_header, 22, 4000); }},
        {"OtherPixels", [](RawContainer& c) { Set16(c.user_header, 28, 32); }},
        {"EndlessPalette", [](RawContainer& c) { Set32(c.user_header, 46, 0xFFFFFFFF); }},
    };
    for (const Case& c : cases) {
        RawContainer container = SmallTrack();
        c.harm(container);
        VideoFilekel track;
        EXPECT_FALSE(track.OpenForRead(folder.Write("hostile.kvf", container.Build()))) << c.name;
        EXPECT_EQ(track.OpenMode(), ZFilekel::Mode::Closed) << c.name;
        EXPECT_EQ(track.GetBitmapInfo(), nullptr) << c.name;
        EXPECT_NE(track.HeaderError().fault, Fault::None) << c.name;
    }
    EXPECT_THAT(boxes.Boxes(), IsEmpty());
}

TEST(HostilePictureTracks, MayHaveSideBlocksOfAnyLength) {
    const TemporaryFolder folder;
    for (const std::size_t length : {std::size_t{1}, std::size_t{4}, std::size_t{500}}) {
        RawContainer container = SmallTrack();
        container.sides = {Bytes(length, 1), Bytes(length, 2)};
        VideoFilekel track;
        ASSERT_TRUE(track.OpenForRead(folder.Write("side.kvf", container.Build())));
        FrameSide side;
        ASSERT_TRUE(track.ReadFrame(1, side));
        EXPECT_EQ(side.SyncNumber, length < 4 ? 0U : 0x02020202U);
        EXPECT_EQ(side.CaptureTime, length < 12 ? 0U : 0x02020202U);
        ASSERT_TRUE(track.GoToRecord(0));
        EXPECT_EQ(track.CurrentSyncNumber(), length == 1 ? 1U : 0x01010101U);
    }
}

TEST(PictureSizes, ThatTheFileLeavesOutAreFilledIn) {
    const TemporaryFolder folder;
    for (const std::uint32_t size : {0U, 12U, 0xFFFFFFFFU}) {
        RawContainer container = SmallTrack();
        Set32(container.user_header, 34, size);
        VideoFilekel track;
        ASSERT_TRUE(track.OpenForRead(folder.Write("size.kvf", container.Build())));
        EXPECT_EQ(DWORD{track.GetBitmapInfo()->bmiHeader.biSizeImage}, kPictureBytes);
        EXPECT_EQ(DWORD{ParseVideoHeader(track.UserHeader()).Value().bitmap.biSizeImage},
                  size); // as stored
    }
}

TEST(FilmPictures, ComeFromTheirOwnWindow) {
    const TemporaryFolder folder;
    VideoFilekel track;
    ASSERT_TRUE(
        track.OpenForRead(folder.Write("a.kva", FilmOf(Bytes(1000, 9), SmallTrack().Build()))));
    FrameSide side;
    ASSERT_TRUE(track.ReadFrame(1, side));
    EXPECT_EQ(Bits(track), Picture(8));
    EXPECT_EQ(track.CurrentSyncNumber(), 0x02020202U);
    ASSERT_TRUE(track.Close());
    EXPECT_FALSE(track.OpenForRead(folder.Write("b.kva", FilmOf(SmallTrack().Build(), {}))));
}

TEST(CurrentImage, IsReadByAnotherThreadWhileImagesAreRead) {
    const TemporaryFolder folder;
    VideoFilekel track;
    ASSERT_TRUE(track.OpenForRead(WriteTrack(folder, "track.kvf", 8, 200)));
    std::atomic<bool> done{false};
    int highest = 0;
    {
        const std::jthread watcher([&] {
            int before = 0;
            do {
                const int now = track.CurrentFrame();
                EXPECT_GE(now, before);
                before = highest = now;
            } while (!done);
            highest = track.CurrentFrame();
        });
        FrameSide side;
        while (track.ReadNextFrame(side)) {}
        done = true;
    }
    EXPECT_EQ(highest, 200);
}

} // namespace

} // namespace kelvo::test
