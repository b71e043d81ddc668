#pragma once
// The structures of device-independent bitmaps, as they lie in BMP files, packed bitmaps and video
// headers. Little-endian, like every machine this runs on.

#include "platform/base/types.h"

#include <bit>

static_assert(std::endian::native == std::endian::little);

inline constexpr DWORD BI_RGB = 0;
inline constexpr UINT DIB_RGB_COLORS = 0; ///< the palette holds colours
inline constexpr DWORD SRCCOPY = 0x00CC0020;
inline constexpr UINT CF_DIB = 8; ///< the clipboard's format: a packed bitmap

// Packed, because in a BMP file the info header lies at offset 14, where nothing aligns it.
#pragma pack(push, 1)

/// What a BMP file begins with.
struct BITMAPFILEHEADER {
    WORD bfType; ///< 0x4D42, "BM"
    DWORD bfSize;
    WORD bfReserved1;
    WORD bfReserved2;
    DWORD bfOffBits; ///< of the pixels, from the start of the file
};

struct BITMAPINFOHEADER {
    DWORD biSize; ///< 40
    LONG biWidth;
    LONG biHeight; ///< positive: the first row in memory is the bottom one
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};

struct BITMAPCOREHEADER {
    DWORD bcSize; ///< 12
    WORD bcWidth;
    WORD bcHeight;
    WORD bcPlanes;
    WORD bcBitCount;
};

struct RGBTRIPLE {
    BYTE rgbtBlue;
    BYTE rgbtGreen;
    BYTE rgbtRed;
};

struct RGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
};

struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1]; ///< biClrUsed of them follow the header
};

#pragma pack(pop)

static_assert(sizeof(BITMAPFILEHEADER) == 14 && sizeof(BITMAPINFOHEADER) == 40);
static_assert(sizeof(BITMAPCOREHEADER) == 12 && sizeof(RGBQUAD) == 4 && sizeof(BITMAPINFO) == 44);
