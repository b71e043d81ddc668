// StretchDIBits: pixel formats, row order, source rectangles, scaling, clipping, hostile headers.

#include "tests/platform/desktop/SurfaceWindow.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace kelvo::desktop {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Pixels = std::vector<std::uint32_t>;

struct HeaderFields {
    LONG width;
    LONG height;
    WORD bit_count;
    DWORD colours_used = 0;
    DWORD compression = BI_RGB;
    DWORD size = sizeof(BITMAPINFOHEADER);
};

/// A header with its palette, as large as it says and no larger.
Bytes Info(const HeaderFields& fields, const std::vector<RGBQUAD>& palette = {}) {
    BITMAPINFOHEADER header{};
    header.biSize = fields.size;
    header.biWidth = fields.width;
    header.biHeight = fields.height;
    header.biPlanes = 1;
    header.biBitCount = fields.bit_count;
    header.biCompression = fields.compression;
    header.biClrUsed = fields.colours_used;
    Bytes bytes(sizeof(header) + palette.size() * sizeof(RGBQUAD));
    std::memcpy(bytes.data(), &header, sizeof(header));
    if (!palette.empty()) {
        std::memcpy(bytes.data() + sizeof(header), palette.data(),
                    palette.size() * sizeof(RGBQUAD));
    }
    return bytes;
}

const BITMAPINFO* AsInfo(const Bytes& bytes) {
    return reinterpret_cast<const BITMAPINFO*>(bytes.data());
}

Bytes Words(const std::vector<std::uint16_t>& words) {
    Bytes bytes;
    for (const std::uint16_t word : words) {
        bytes.push_back(static_cast<std::uint8_t>(word & 0xFFU));
        bytes.push_back(static_cast<std::uint8_t>(word >> 8U));
    }
    return bytes;
}

constexpr std::uint32_t kWhite = 0xFFFFFF; // a new surface

/// Draws a whole picture 1:1 at the top left of a surface of its size.
Pixels DrawWhole(const Bytes& info, const Bytes& bits, int width, int height) {
    SurfaceWindow window({width, height});
    const HDC dc = GetDC(window.Handle());
    EXPECT_EQ(StretchDIBits(dc, 0, 0, width, height, 0, 0, width, height, bits.data(), AsInfo(info),
                            DIB_RGB_COLORS, SRCCOPY),
              height);
    ReleaseDC(window.Handle(), dc);
    return window.Pixels();
}

struct FormatVector {
    std::string name;
    Bytes info;
    Bytes bits;
    int width;
    int height;
    Pixels expected;
};

class StretchDIBitsFormats : public testing::TestWithParam<FormatVector> {};

TEST_P(StretchDIBitsFormats, GiveThesePixels) {
    const FormatVector& vector = GetParam();
    EXPECT_EQ(DrawWhole(vector.info, vector.bits, vector.width, vector.height), vector.expected);
}

const std::vector<RGBQUAD> kTwoColours{{0x30, 0x20, 0x10, 0}, {0x03, 0x02, 0x01, 0}};

INSTANTIATE_TEST_SUITE_P(
    , StretchDIBitsFormats,
    testing::Values(
        FormatVector{"UpperBitsOf555AreRepeatedBelow",
                     Info({4, 1, 16}),
                     Words({0x7FFF, 0x0000, 0x4210, 0x0421}),
                     4,
                     1,
                     {0xFFFFFF, 0x000000, 0x848484, 0x080808}},
        FormatVector{"RedIsHighBlueIsLowAndBit15IsIgnored",
                     Info({4, 1, 16}),
                     Words({0x7C00, 0x03E0, 0x001F, 0x8000}),
                     4,
                     1,
                     {0xFF0000, 0x00FF00, 0x0000FF, 0x000000}},
        FormatVector{"BottomRowComesFirstAndRowsAreFilledToFourBytes",
                     Info({3, 2, 16}),
                     Words({0x001F, 0x001F, 0x001F, 0x5555, 0x7C00, 0x7C00, 0x7C00, 0x5555}),
                     3,
                     2,
                     {0xFF0000, 0xFF0000, 0xFF0000, 0x0000FF, 0x0000FF, 0x0000FF}},
        FormatVector{"NegativeHeightMeansTopRowFirst",
                     Info({1, -2, 16}),
                     Words({0x001F, 0x5555, 0x7C00, 0x5555}),
                     1,
                     2,
                     {0x0000FF, 0xFF0000}},
        FormatVector{"TwentyFourBitsAreBlueGreenRed",
                     Info({1, 2, 24}),
                     {1, 2, 3, 0, 4, 5, 6, 0},
                     1,
                     2,
                     {0x060504, 0x030201}},
        FormatVector{
            "ThirtyTwoBitsIgnoreTheFourthByte", Info({1, 1, 32}), {1, 2, 3, 9}, 1, 1, {0x030201}},
        FormatVector{"EightBitsPastThePaletteAreBlack",
                     Info({3, 1, 8, 2}, kTwoColours),
                     {1, 0, 2, 0},
                     3,
                     1,
                     {0x010203, 0x102030, 0x000000}},
        FormatVector{"FourBitsTakeTheHighHalfFirst",
                     Info({3, 1, 4, 2}, kTwoColours),
                     {0x10, 0x1F, 0, 0},
                     3,
                     1,
                     {0x010203, 0x102030, 0x010203}},
        FormatVector{"OneBitTakesTheHighestBitFirstAndAFullPaletteIsImplied",
                     Info({9, 1, 1}, kTwoColours),
                     {0x81, 0x80, 0, 0},
                     9,
                     1,
                     {0x010203, 0x102030, 0x102030, 0x102030, 0x102030, 0x102030, 0x102030,
                      0x010203, 0x010203}}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(StretchDIBits, ReadsTheOldShortHeader) {
    const Bytes info{12, 0, 0, 0, 2, 0, 1, 0, 1, 0, 8, 0};
    Bytes with_palette = info;
    for (int i = 0; i < 256; ++i) {
        with_palette.insert(with_palette.end(), {static_cast<std::uint8_t>(i), 7, 9});
    }
    EXPECT_EQ(DrawWhole(with_palette, {5, 200, 0, 0}, 2, 1), (Pixels{0x090705, 0x0907C8}));
}

TEST(StretchDIBits, AgreesWithOnePixelAtATimeOnEveryWidthAroundItsBlocks) {
    for (int width = 1; width <= 70; ++width) {
        std::vector<std::uint16_t> words;
        Pixels expected;
        for (int x = 0; x < width; ++x) {
            const auto pixel = static_cast<std::uint32_t>(x * 2654435 + width) & 0x7FFFU;
            words.push_back(static_cast<std::uint16_t>(pixel));
            std::uint32_t rgb = 0;
            for (const unsigned shift : {10U, 5U, 0U}) {
                const std::uint32_t value = pixel >> shift & 31U;
                rgb = rgb << 8U | (value << 3U | value >> 2U);
            }
            expected.push_back(rgb);
        }
        if (width % 2 != 0) words.push_back(0);
        EXPECT_EQ(DrawWhole(Info({width, 1, 16}), Words(words), width, 1), expected) << width;
    }
}

/// One row of 32-bit pixels whose blue value is their number, counted from 1.
struct NumberedRow {
    explicit NumberedRow(int count) : info(Info({count, 1, 32})) {
        for (int i = 1; i <= count; ++i) {
            bits.insert(bits.end(), {static_cast<std::uint8_t>(i), 0, 0, 0});
        }
    }
    Bytes info;
    Bytes bits;
};

struct ScaleVector {
    std::string name;
    int x;
    int width;
    int source_x;
    int source_width;
    Pixels expected; ///< eight pixels, drawn from a row of six
};

class StretchDIBitsScales : public testing::TestWithParam<ScaleVector> {};

TEST_P(StretchDIBitsScales, TakeThePixelUnderTheCentre) {
    const ScaleVector& vector = GetParam();
    const NumberedRow row(6);
    // Once along a row and once along a column: both directions follow the same rule.
    SurfaceWindow across({8, 1});
    HDC dc = GetDC(across.Handle());
    StretchDIBits(dc, vector.x, 0, vector.width, 1, vector.source_x, 0, vector.source_width, 1,
                  row.bits.data(), AsInfo(row.info), DIB_RGB_COLORS, SRCCOPY);
    EXPECT_EQ(across.Pixels(), vector.expected);
    ReleaseDC(across.Handle(), dc);

    const Bytes column = Info({1, -6, 32});
    SurfaceWindow down({1, 8});
    dc = GetDC(down.Handle());
    StretchDIBits(dc, 0, vector.x, 1, vector.width, 0, vector.source_x, 1, vector.source_width,
                  row.bits.data(), AsInfo(column), DIB_RGB_COLORS, SRCCOPY);
    EXPECT_EQ(down.Pixels(), vector.expected);
    ReleaseDC(down.Handle(), dc);
}

constexpr std::uint32_t W = kWhite;
INSTANTIATE_TEST_SUITE_P(
    , StretchDIBitsScales,
    testing::Values(
        ScaleVector{"Same", 1, 6, 0, 6, {W, 1, 2, 3, 4, 5, 6, W}},
        ScaleVector{"Half", 0, 3, 0, 6, {2, 4, 6, W, W, W, W, W}},
        ScaleVector{"Third", 0, 2, 0, 6, {2, 5, W, W, W, W, W, W}},
        ScaleVector{"Double", 0, 6, 1, 3, {2, 2, 3, 3, 4, 4, W, W}},
        ScaleVector{"FourThirds", 0, 8, 0, 6, {1, 2, 2, 3, 4, 5, 5, 6}},
        ScaleVector{"ClippedLeft", -3, 6, 0, 6, {4, 5, 6, W, W, W, W, W}},
        ScaleVector{"ClippedBothSidesWhileDoubled", -2, 12, 0, 6, {2, 2, 3, 3, 4, 4, 5, 5}},
        ScaleVector{"MirroredTarget", 6, -6, 0, 6, {6, 5, 4, 3, 2, 1, W, W}},
        ScaleVector{"MirroredSource", 0, 6, 6, -6, {6, 5, 4, 3, 2, 1, W, W}},
        ScaleVector{"MirroredTwice", 6, -6, 6, -6, {1, 2, 3, 4, 5, 6, W, W}},
        ScaleVector{"SourceBeginsBeforeThePicture", 0, 4, -2, 4, {W, W, 1, 2, W, W, W, W}},
        ScaleVector{"SourceEndsBehindThePicture", 0, 4, 4, 4, {5, 6, W, W, W, W, W, W}},
        ScaleVector{"NothingOfTheTargetIsSeen", 9, 6, 0, 6, {W, W, W, W, W, W, W, W}},
        ScaleVector{
            "HugeTargetShowsOnePixel", -100000000, 134217728, 0, 6, {5, 5, 5, 5, 5, 5, 5, 5}}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(StretchDIBits, CountsSourceRowsFromTheBottomOfABottomUpPicture) {
    // In memory: bottom row 1, then 2, then the top row 3.
    const NumberedRow rows(3);
    const Bytes bottom_up = Info({1, 3, 32});
    SurfaceWindow window({1, 2});
    const HDC dc = GetDC(window.Handle());
    EXPECT_EQ(StretchDIBits(dc, 0, 0, 1, 2, 0, 0, 1, 2, rows.bits.data(), AsInfo(bottom_up),
                            DIB_RGB_COLORS, SRCCOPY),
              2);
    EXPECT_EQ(window.Pixels(), (Pixels{2, 1}));
    StretchDIBits(dc, 0, 0, 1, 2, 0, 1, 1, 2, rows.bits.data(), AsInfo(bottom_up), DIB_RGB_COLORS,
                  SRCCOPY);
    EXPECT_EQ(window.Pixels(), (Pixels{3, 2}));
    ReleaseDC(window.Handle(), dc);
}

TEST(StretchDIBits, AnswersTheSourceRowsThatThePictureHas) {
    const NumberedRow row(6);
    SurfaceWindow window({8, 8});
    const HDC dc = GetDC(window.Handle());
    const auto draw = [&](int source_y, int source_height) {
        return StretchDIBits(dc, 0, 0, 6, 6, 0, source_y, 6, source_height, row.bits.data(),
                             AsInfo(row.info), DIB_RGB_COLORS, SRCCOPY);
    };
    EXPECT_EQ(draw(0, 1), 1);
    EXPECT_EQ(draw(-1, 3), 1);
    EXPECT_EQ(draw(1, 1), 0);
    EXPECT_EQ(draw(-2, 2), 0);
    ReleaseDC(window.Handle(), dc);
}

TEST(StretchDIBits, AveragesWhereAPictureShrinksInHalftoneMode) {
    const Bytes info = Info({4, -2, 32});
    const Bytes bits{0, 0,   0, 0, 100, 0,   0, 0, 255, 255, 255, 0, 255, 255, 255, 0,
                     0, 200, 0, 0, 100, 200, 0, 0, 0,   0,   0,   0, 0,   0,   0,   0};
    SurfaceWindow window({2, 1});
    const HDC dc = GetDC(window.Handle());
    EXPECT_EQ(SetStretchBltMode(dc, HALFTONE), BLACKONWHITE);
    EXPECT_EQ(SetStretchBltMode(dc, 5), 0);
    EXPECT_EQ(StretchDIBits(dc, 0, 0, 2, 1, 0, 0, 4, 2, bits.data(), AsInfo(info), DIB_RGB_COLORS,
                            SRCCOPY),
              2);
    EXPECT_EQ(window.Pixels(), (Pixels{0x006432, 0x808080}));
    ReleaseDC(window.Handle(), dc);
}

TEST(StretchDIBits, InterpolatesWhereAPictureGrowsInHalftoneMode) {
    const Bytes info = Info({2, -1, 32});
    const Bytes bits{0, 0, 0, 0, 100, 0, 0, 0};
    SurfaceWindow window({8, 1});
    const HDC dc = GetDC(window.Handle());
    SetStretchBltMode(dc, HALFTONE);
    StretchDIBits(dc, 0, 0, 8, 1, 0, 0, 2, 1, bits.data(), AsInfo(info), DIB_RGB_COLORS, SRCCOPY);
    EXPECT_EQ(window.Pixels(), (Pixels{0, 0, 13, 38, 63, 88, 100, 100}));
    ReleaseDC(window.Handle(), dc);
}

TEST(StretchDIBits, RefusesWhatItCannotDrawAndLeavesThePixelsAlone) {
    SurfaceWindow window({4, 4});
    const HDC dc = GetDC(window.Handle());
    const Bytes bits(64);
    const auto draw = [&](const HeaderFields& fields) {
        const Bytes info = Info(fields);
        return StretchDIBits(dc, 0, 0, 4, 4, 0, 0, 4, 4, bits.data(), AsInfo(info), DIB_RGB_COLORS,
                             SRCCOPY);
    };
    EXPECT_EQ(draw({0, 4, 16}), 0);
    EXPECT_EQ(draw({-4, 4, 16}), 0);
    EXPECT_EQ(draw({4, 0, 16}), 0);
    EXPECT_EQ(draw({4, static_cast<LONG>(0x80000000U), 16}), 0);
    EXPECT_EQ(draw({0x7FFFFFFF, 4, 16}), 0);
    EXPECT_EQ(draw({4, 4, 0}), 0);
    EXPECT_EQ(draw({4, 4, 15}), 0);
    EXPECT_EQ(draw({4, 4, 16, 0, 1}), 0);
    EXPECT_EQ(draw({4, 4, 16, 0, BI_RGB, 39}), 0);
    EXPECT_EQ(draw({4, 4, 16, 0, BI_RGB, 0}), 0);
    EXPECT_EQ(draw({4, 4, 8, 0, BI_RGB, 125}), 0);
    EXPECT_EQ(draw({4, 4, 8, 0, BI_RGB, 0xFFFFFFFF}), 0);

    const Bytes good = Info({4, 4, 16});
    const auto call = [&](HDC where, int width, int height, int source_width, const void* pixels,
                          const BITMAPINFO* info, UINT usage, DWORD operation) {
        return StretchDIBits(where, 0, 0, width, height, 0, 0, source_width, 4, pixels, info, usage,
                             operation);
    };
    EXPECT_EQ(call(dc, 0, 4, 4, bits.data(), AsInfo(good), DIB_RGB_COLORS, SRCCOPY), 0);
    EXPECT_EQ(call(dc, 4, 0, 4, bits.data(), AsInfo(good), DIB_RGB_COLORS, SRCCOPY), 0);
    EXPECT_EQ(call(dc, 4, 4, 0, bits.data(), AsInfo(good), DIB_RGB_COLORS, SRCCOPY), 0);
    EXPECT_EQ(call(dc, 0x7FFFFFFF, 4, 4, bits.data(), AsInfo(good), DIB_RGB_COLORS, SRCCOPY), 0);
    EXPECT_EQ(call(dc, 4, 4, 4, nullptr, AsInfo(good), DIB_RGB_COLORS, SRCCOPY), 0);
    EXPECT_EQ(call(dc, 4, 4, 4, bits.data(), nullptr, DIB_RGB_COLORS, SRCCOPY), 0);
    EXPECT_EQ(call(dc, 4, 4, 4, bits.data(), AsInfo(good), 1, SRCCOPY), 0);
    EXPECT_EQ(call(dc, 4, 4, 4, bits.data(), AsInfo(good), DIB_RGB_COLORS, 0x42), 0);
    EXPECT_EQ(call(nullptr, 4, 4, 4, bits.data(), AsInfo(good), DIB_RGB_COLORS, SRCCOPY), 0);
    EXPECT_EQ(window.Pixels(), Pixels(16, kWhite));
    EXPECT_EQ(call(dc, 4, 4, 4, bits.data(), AsInfo(good), DIB_RGB_COLORS, SRCCOPY), 4);
    EXPECT_EQ(window.Pixels(), Pixels(16, 0));
    ReleaseDC(window.Handle(), dc);
}

// Bits and palette lie in blocks of exactly their size: a byte read too far is seen by the address
// sanitizer.
TEST(StretchDIBits, ReadsNoByteOutsideOfRowsAndPalette) {
    for (const WORD bit_count : std::vector<WORD>{1, 4, 8, 16, 24, 32}) {
        for (LONG width = 1; width <= 35; ++width) {
            const DWORD colours = bit_count <= 8 ? 2 : 0;
            const Bytes info = Info({width, 3, bit_count, colours},
                                    bit_count <= 8 ? kTwoColours : std::vector<RGBQUAD>{});
            const auto stride = (static_cast<std::size_t>(width) * bit_count + 31) / 32 * 4;
            const Bytes bits(stride * 3, 0x5A);
            SurfaceWindow window({70, 6});
            const HDC dc = GetDC(window.Handle());
            for (const int scale : {1, 2}) {
                EXPECT_EQ(StretchDIBits(dc, 0, 0, width * scale, 3 * scale, 0, 0, width, 3,
                                        bits.data(), AsInfo(info), DIB_RGB_COLORS, SRCCOPY),
                          3);
            }
            ReleaseDC(window.Handle(), dc);
        }
    }
}

} // namespace
} // namespace kelvo::desktop
