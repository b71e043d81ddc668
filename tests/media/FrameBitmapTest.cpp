#include "media/NewCBitmaplum.h"
#include "media/Pixel555.h"
#include "platform/base/file_calls.h"
#include "platform/base/message_boxes.h"
#include "tests/media/MediaFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>

namespace kelvo::test {

namespace {

using platform::MessageBoxRecorder;
using testing::Test;

// --- pixels

TEST(ChannelsQuantised, RoundToNearestAndNeverPass31) {
    struct Step {
        unsigned first, last, value;
    };
    for (const Step step :
         {Step{0, 3, 0}, Step{4, 11, 1}, Step{236, 243, 30}, Step{244, 255, 31}}) {
        for (unsigned v = step.first; v <= step.last; ++v) {
            EXPECT_EQ(pixel::Quantize5(static_cast<std::uint8_t>(v)), step.value) << v;
        }
    }
}

TEST(PixelsPacked, HaveRedOnTopAndBit15Clear) {
    EXPECT_EQ(pixel::PackRGB555(255, 255, 255), 0x7FFF);
    EXPECT_EQ(pixel::PackRGB555(0, 0, 0), 0);
    EXPECT_EQ(pixel::PackRGB555(8, 16, 24), (1U << 10U) | (2U << 5U) | 3U);
    EXPECT_EQ(pixel::PackRGB555(4, 0, 0), 1U << 10U);              // rounds up
    EXPECT_EQ(pixel::PackTruncated(7, 15, 255), (1U << 5U) | 31U); // cuts
    EXPECT_EQ(pixel::PackColour(0x000000FF), 0x7C00);
    EXPECT_EQ(pixel::PackColour(0x00FF0000), 0x001F);
}

TEST(PixelsUnpacked, FillTheHighFiveBitsOfEachChannel) {
    EXPECT_EQ(pixel::Red(0xFC00), 0xF8); // bit 15 is of nobody
    EXPECT_EQ(pixel::Green(0x03E0), 0xF8);
    EXPECT_EQ(pixel::Blue(0x0011), 0x88);
    EXPECT_EQ(pixel::Red(0x03FF), 0);
}

TEST(RowStride, IsFilledUpToFourBytesAndNeverWraps) {
    EXPECT_EQ(pixel::RowStride(3, 24), 12U);
    EXPECT_EQ(pixel::RowStride(3, 16), 8U);
    EXPECT_EQ(pixel::RowStride(1, 1), 4U);
    EXPECT_EQ(pixel::RowStride(0, 24), 0U);
    EXPECT_EQ(pixel::RowStride(0xFFFFFFFF, 32), 4ULL * 0xFFFFFFFF);
}

// --- the bitmap object

Bytes InfoHeader(std::int32_t width, std::int32_t height, std::uint16_t bits, std::uint32_t size,
                 std::uint32_t colours = 0) {
    Bytes info;
    Put32(info, 40);
    Put32(info, static_cast<std::uint32_t>(width));
    Put32(info, static_cast<std::uint32_t>(height));
    Put16(info, 1);
    Put16(info, bits);
    Put32(info, 0);
    Put32(info, size);
    Put32(info, 0);
    Put32(info, 0);
    Put32(info, colours);
    Put32(info, 0);
    return info;
}

/// 3 x 2, 24 bits; the stored bytes are 0, 1, 2 ... 23, three of each row being fill.
Bytes SmallPixels() {
    Bytes pixels(24);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(i);
    }
    return pixels;
}

TEST(BitmapObject, HoldsAWholeBmpFile) {
    NewCBitmaplum bitmap;
    ASSERT_TRUE(bitmap.SetByInfoAndBits(InfoHeader(3, 2, 24, 24), SmallPixels()));
    const Bytes head{'B', 'M', 78, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0};
    EXPECT_EQ(Bytes(bitmap.FileImage().begin(), bitmap.FileImage().end()),
              Joined({head, InfoHeader(3, 2, 24, 24), SmallPixels()}));
    EXPECT_EQ(bitmap.Stride(), 12U);
    EXPECT_EQ(bitmap.PixelLength(), 24U);
    EXPECT_EQ(bitmap.PixelCount(), 6);

    const NewCBitmaplum copy = bitmap;
    bitmap.Free();
    EXPECT_FALSE(bitmap.HasImage());
    EXPECT_EQ(copy.Pixels()[23], 23);
    EXPECT_EQ(LONG{copy.Info()->bmiHeader.biWidth}, 3);
}

TEST(BitmapObject, CountsRowsFromTheTopInABottomUpImage) {
    NewCBitmaplum bitmap;
    ASSERT_TRUE(bitmap.SetByInfoAndBits(InfoHeader(3, 2, 24, 24), SmallPixels()));
    EXPECT_EQ(bitmap.PixelAddress(0, 0), bitmap.Pixels() + 12);
    EXPECT_EQ(bitmap.PixelAddress(2, 1), bitmap.Pixels() + 6);
    EXPECT_EQ(bitmap.GetPixel24(2, 1), RGB(8, 7, 6));
    bitmap.SetPixel24(0, 0, RGB(1, 2, 3));
    EXPECT_EQ(bitmap.Pixels()[12], 3);
    EXPECT_EQ(bitmap.Pixels()[14], 1);
    for (const POINT outside : {POINT{3, 0}, POINT{0, 2}, POINT{-1, 0}, POINT{0, -1}}) {
        EXPECT_EQ(bitmap.PixelAddress(outside.x, outside.y), nullptr);
    }
}

TEST(BitmapObject, KeepsThePaletteAndTakesTheHeightOfATopDownImage) {
    NewCBitmaplum bitmap;
    const Bytes palette{1, 2, 3, 0, 4, 5, 6, 0};
    ASSERT_TRUE(
        bitmap.SetByInfoAndBits(Joined({InfoHeader(4, -2, 8, 8, 2), palette}), Bytes(8, 9)));
    EXPECT_EQ(bitmap.Height(), 2);
    EXPECT_EQ(bitmap.FileImage()[10], 14 + 40 + 8); // bfOffBits
    EXPECT_EQ(bitmap.FileImage()[14 + 40 + 4], 4);
    EXPECT_EQ(bitmap.Pixels()[0], 9);
}

TEST(BitmapObject, ReadsTheSmallHeaderOfOldBitmaps) {
    Bytes packed;
    Put32(packed, 12);
    for (const std::uint16_t field : std::initializer_list<std::uint16_t>{5, 3, 1, 24}) {
        Put16(packed, field);
    }
    packed.resize(12 + 16 * 3, 7);
    NewCBitmaplum bitmap;
    ASSERT_TRUE(bitmap.CreateByPackedData(packed));
    EXPECT_EQ(bitmap.Width(), 5);
    EXPECT_EQ(bitmap.Height(), 3);
    EXPECT_EQ(bitmap.BitsPerPixel(), 24);
    EXPECT_EQ(bitmap.FileImage()[10], 14 + 12);
}

TEST(BitmapObject, TakesPackedPixelsWhoseSizeWasLeftOut) {
    NewCBitmaplum bitmap;
    ASSERT_TRUE(bitmap.CreateByPackedData(Joined({InfoHeader(3, 2, 24, 0), SmallPixels()})));
    EXPECT_EQ(bitmap.PixelLength(), 24U);
    EXPECT_EQ(DWORD{bitmap.Info()->bmiHeader.biSizeImage}, 24U);
}

TEST(BitmapObject, RefusesAPackedBlockThatIsShorterThanItsHeaderSays) {
    const MessageBoxRecorder boxes;
    NewCBitmaplum bitmap;
    ASSERT_TRUE(bitmap.SetByInfoAndBits(InfoHeader(3, 2, 24, 24), SmallPixels()));
    EXPECT_FALSE(bitmap.CreateByPackedData(Joined({InfoHeader(3, 2, 24, 25), SmallPixels()})));
    EXPECT_FALSE(bitmap.HasImage()); // the old one went first
    ASSERT_EQ(boxes.Boxes().size(), 1U);
    EXPECT_EQ(boxes.Boxes()[0].text, "(pbmfh->bfSize > dwFileSize)");
    EXPECT_EQ(boxes.Boxes()[0].caption, "bool KLVNewCBitmapkel::CreateByPackedData()");
}

TEST(HostileBitmaps, AreRefusedBeforeAnythingIsAllocated) {
    const MessageBoxRecorder boxes;
    struct Case {
        const char* name;
        Bytes info;
    };
    Bytes absurd_palette = InfoHeader(3, 2, 24, 24, 0xFFFFFFFF);
    Bytes absurd_header = InfoHeader(3, 2, 24, 24);
    Set32(absurd_header, 0, 0xFFFFFFF0);
    const Case cases[] = {
        {"Empty", {}},
        {"CutHeader", Bytes(39, 40)},
        {"NoWidth", InfoHeader(0, 2, 24, 24)},
        {"NegativeWidth", InfoHeader(-3, 2, 24, 24)},
        {"LowestHeight", InfoHeader(3, INT_MIN, 24, 24)},
        {"RowsBehindThePixels", InfoHeader(3, 3, 24, 24)},
        {"HugePicture", InfoHeader(INT_MAX, INT_MAX, 0xFFFF, 0)},
        {"HugeSize", InfoHeader(3, 2, 24, 0xFFFFFFFF)},
        {"HugePalette", absurd_palette},
        {"HugeHeader", absurd_header},
    };
    for (const Case& c : cases) {
        NewCBitmaplum bitmap;
        EXPECT_FALSE(bitmap.SetByInfoAndBits(c.info, SmallPixels())) << c.name;
        EXPECT_FALSE(bitmap.CreateByPackedData(Joined({c.info, SmallPixels()}))) << c.name;
        EXPECT_FALSE(bitmap.HasImage()) << c.name;
        EXPECT_EQ(bitmap.PixelAddress(0, 0), nullptr) << c.name;
        EXPECT_TRUE(bitmap.FileImage().empty()) << c.name;
    }
}

TEST(BitmapConversion, Packs24BitPixelsInTheSameBlock) {
    NewCBitmaplum bitmap;
    Bytes pixels(24, 0);
    // The stored rows: blue, white, black with fill; then red, green, grey.
    const Bytes lower{255, 0, 0, 255, 255, 255, 0, 0, 0};
    const Bytes upper{0, 0, 255, 0, 255, 0, 128, 128, 128};
    std::ranges::copy(lower, pixels.begin());
    std::ranges::copy(upper, pixels.begin() + 12);
    ASSERT_TRUE(bitmap.SetByInfoAndBits(InfoHeader(3, 2, 24, 24), pixels));
    ASSERT_TRUE(bitmap.internalcorvert(16));
    const auto pixel_at = [&](int x, int y) {
        const std::uint8_t* const address = bitmap.PixelAddress(x, y);
        return address[0] | static_cast<unsigned>(address[1]) << 8U;
    };
    EXPECT_EQ(pixel_at(0, 1), 0x001FU);
    EXPECT_EQ(pixel_at(1, 1), 0x7FFFU);
    EXPECT_EQ(pixel_at(2, 1), 0U);
    EXPECT_EQ(pixel_at(0, 0), 0x7C00U);
    EXPECT_EQ(pixel_at(1, 0), 0x03E0U);
    EXPECT_EQ(pixel_at(2, 0), 0x4210U);
    EXPECT_EQ(bitmap.Stride(), 8U);
    EXPECT_EQ(DWORD{bitmap.Info()->bmiHeader.biSizeImage}, 16U);
    EXPECT_EQ(WORD{bitmap.Info()->bmiHeader.biBitCount}, 16);
    EXPECT_EQ(bitmap.FileImage().size(), 14U + 40U + 16U);
    EXPECT_EQ(bitmap.PixelLength(), 16U);
}

TEST(BitmapConversion, KnowsNothingBut24To16) {
    const MessageBoxRecorder boxes;
    NewCBitmaplum bitmap;
    ASSERT_TRUE(bitmap.SetByInfoAndBits(InfoHeader(3, 2, 24, 24), SmallPixels()));
    EXPECT_FALSE(bitmap.internalcorvert(8));
    ASSERT_TRUE(bitmap.internalcorvert(16));
    EXPECT_FALSE(bitmap.internalcorvert(16));
    ASSERT_EQ(boxes.Boxes().size(), 2U);
    EXPECT_EQ(boxes.Boxes()[0].text,
              "KLVNewCBitmapkel::internalcorvert() IMPLEMENTATA solo per 24->16");
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
}

TEST(BitmapFile, HoldsTheImageOrIsNotThere) {
    const TemporaryFolder folder;
    NewCBitmaplum bitmap;
    ASSERT_TRUE(bitmap.SetByInfoAndBits(InfoHeader(3, 2, 24, 24), SmallPixels()));
    ASSERT_TRUE(bitmap.SaveToFile(folder.Name("picture.bmp")));
    EXPECT_EQ(ReadFile(folder.Name("picture.bmp")),
              Bytes(bitmap.FileImage().begin(), bitmap.FileImage().end()));
    EXPECT_FALSE(bitmap.SaveToFile(folder.Name("nowhere/picture.bmp")));

    platform::FileCalls full_disk = platform::SystemFileCalls();
    full_disk.write = [](int, const void*, std::size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    const platform::ScopedFileCalls scope{full_disk};
    EXPECT_FALSE(bitmap.SaveToFile(folder.Name("full.bmp")));
    EXPECT_EQ(folder.Files(), std::vector<std::string>{"picture.bmp"});
}

} // namespace

} // namespace kelvo::test
