#pragma once
// The headers of device-independent bitmaps, as they lie in files, in packed bitmaps and in film
// headers. What draws them is declared in platform/desktop/drawing.h.

#include "platform/base/types.h"

inline constexpr DWORD BI_RGB = 0;        ///< biCompression: plain pixels
inline constexpr UINT DIB_RGB_COLORS = 0; ///< the palette holds colours
inline constexpr DWORD SRCCOPY = 0x00CC0020;

#pragma pack(push, 1)
struct BITMAPFILEHEADER {
    WORD bfType;
    DWORD bfSize;
    WORD bfReserved1;
    WORD bfReserved2;
    DWORD bfOffBits;
};
struct BITMAPCOREHEADER {
    DWORD bcSize;
    WORD bcWidth;
    WORD bcHeight;
    WORD bcPlanes;
    WORD bcBitCount;
};
struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight; ///< negative: the first row in memory is the top row
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
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
    RGBQUAD bmiColors[1];
};
#pragma pack(pop)
static_assert(sizeof(BITMAPFILEHEADER) == 14 && sizeof(BITMAPCOREHEADER) == 12);
static_assert(sizeof(BITMAPINFOHEADER) == 40 && sizeof(RGBQUAD) == 4 && sizeof(BITMAPINFO) == 44);
