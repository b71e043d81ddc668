#pragma once
// Drawing: device contexts and what is selected into them, bitmaps, brushes, pens, fonts, text.
//
// Every call works from any thread. Handles are checked: a handle that is none, or is one no
// longer, makes the call fail (0, FALSE, CLR_INVALID) and touches nothing. A device context of a
// window names the window, not its pixels, so it may be kept across changes of size; once the
// window is gone, drawing through it fails without harm.

#include "platform/base/bitmaps.h"
#include "platform/base/types.h"

// --- device contexts ---------------------------------------------------------------------------

struct PAINTSTRUCT {
    HDC hdc;
    BOOL fErase; ///< the background still has to be erased: WM_ERASEBKGND was not handled
    RECT rcPaint;
    BOOL fRestore;
    BOOL fIncUpdate;
    BYTE rgbReserved[32];
};

/// Begins painting: validates what was invalid, sends WM_ERASEBKGND where an erase was asked for,
/// and gives a device context clipped to the invalid rectangle. Thread of the window only.
HDC BeginPaint(HWND window, PAINTSTRUCT* paint);
BOOL EndPaint(HWND window, const PAINTSTRUCT* paint);

/// A device context of the window's client area, or of the whole screen for 0 (measuring only:
/// drawing on the screen fails). A class with CS_OWNDC always gives the same one.
HDC GetDC(HWND window);
/// @return 1 when released; a class's own device context stays as it is.
int ReleaseDC(HWND window, HDC dc);

/// Only driver "DISPLAY" (any case) exists; like GetDC(0), to be freed with DeleteDC.
HDC CreateDCA(LPCSTR driver, LPCSTR device, LPCSTR port, const void* init_data);
/// A device context in memory; draws on a single black pixel until a bitmap is selected.
HDC CreateCompatibleDC(HDC dc);
BOOL DeleteDC(HDC dc);

inline constexpr int HORZRES = 8;
inline constexpr int VERTRES = 10;
inline constexpr int BITSPIXEL = 12;
inline constexpr int PLANES = 14;
inline constexpr int LOGPIXELSX = 88;
inline constexpr int LOGPIXELSY = 90;
/// @return 0 for an index that is none of the above. Without a display the screen is 800 x 800.
int GetDeviceCaps(HDC dc, int index);

inline constexpr int MM_TEXT = 1;
inline constexpr int MM_ANISOTROPIC = 8;
/// @return the former mode, 0 on failure (a mode that is not one of the two).
int SetMapMode(HDC dc, int mode);
BOOL SetWindowOrgEx(HDC dc, int x, int y, POINT* former);
BOOL SetViewportOrgEx(HDC dc, int x, int y, POINT* former);
/// Extents count only in MM_ANISOTROPIC; in MM_TEXT the call changes nothing and succeeds. An
/// extent of 0 fails.
BOOL SetWindowExtEx(HDC dc, int width, int height, SIZE* former);
BOOL SetViewportExtEx(HDC dc, int width, int height, SIZE* former);

// --- objects -----------------------------------------------------------------------------------

inline constexpr int WHITE_BRUSH = 0;
inline constexpr int LTGRAY_BRUSH = 1;
inline constexpr int GRAY_BRUSH = 2;
inline constexpr int DKGRAY_BRUSH = 3;
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;
inline constexpr int WHITE_PEN = 6;
inline constexpr int BLACK_PEN = 7;
inline constexpr int NULL_PEN = 8;
inline constexpr int SYSTEM_FONT = 13;
inline constexpr int DEFAULT_GUI_FONT = 17;
/// Stock objects live for ever; deleting one does nothing and succeeds.
HGDIOBJ GetStockObject(int index);

/// @return the object of the same kind that was selected before; 0 on failure. A bitmap goes only
/// into a device context in memory, and only into one at a time.
HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
/// Fails while the object is selected into a device context.
BOOL DeleteObject(HGDIOBJ object);

struct BITMAP {
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight;
    LONG bmWidthBytes;
    WORD bmPlanes;
    WORD bmBitsPixel; ///< always 32: bitmaps are kept as the screen has them
    LPVOID bmBits;    ///< always null
};
/// Of a bitmap (BITMAP), or of a font (LOGFONTA).
/// @return bytes written, 0 on failure; with a null buffer, the bytes that it would take.
int GetObjectA(HGDIOBJ object, int size, LPVOID buffer);

// --- bitmaps -----------------------------------------------------------------------------------

/// Loads a bitmap from the module's resources (a packed bitmap of 1, 4, 8, 16, 24 or 32 bits).
/// @param name  a name, or MAKEINTRESOURCE
HBITMAP LoadBitmapA(HINSTANCE module, LPCSTR name);
/// A black bitmap; a size of 0 in either direction gives one of 1 x 1.
HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height);

BOOL BitBlt(HDC target, int x, int y, int width, int height, HDC source, int source_x, int source_y,
            DWORD operation);
BOOL StretchBlt(HDC target, int x, int y, int width, int height, HDC source, int source_x,
                int source_y, int source_width, int source_height, DWORD operation);

inline constexpr int BLACKONWHITE = 1;
inline constexpr int WHITEONBLACK = 2;
inline constexpr int COLORONCOLOR = 3;
inline constexpr int HALFTONE = 4;
/// HALFTONE averages where a picture shrinks and interpolates where it grows; all other modes take
/// the nearest pixel.
/// @return the former mode, 0 on failure.
int SetStretchBltMode(HDC dc, int mode);

/// Draws part of a device-independent bitmap (BI_RGB of 1, 4, 8, 16, 24 or 32 bits; header of 12
/// bytes or of 40 and more), scaled; only DIB_RGB_COLORS and SRCCOPY. Negative extents mirror.
/// @param source_y  counted from the picture's bottom row for a bottom-up bitmap, else from its top
/// @param bits      rows of the width and height that the header says, each filled to 4 bytes: no
///                  byte outside of them is read, and of a source outside of the picture nothing
/// @return how many of the source rows the picture has, also where the target is out of sight; 0 on
/// failure.
int StretchDIBits(HDC dc, int x, int y, int width, int height, int source_x, int source_y,
                  int source_width, int source_height, const void* bits, const BITMAPINFO* info,
                  UINT usage, DWORD operation);

inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;
/// @return CLR_INVALID outside of the drawing area.
COLORREF GetPixel(HDC dc, int x, int y);
/// @return the colour set, CLR_INVALID outside of the drawing area.
COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour);

// --- brushes, pens, shapes ---------------------------------------------------------------------

inline constexpr int COLOR_SCROLLBAR = 0;
inline constexpr int COLOR_WINDOW = 5;
inline constexpr int COLOR_WINDOWTEXT = 8;
inline constexpr int COLOR_HIGHLIGHT = 13;
inline constexpr int COLOR_HIGHLIGHTTEXT = 14;
inline constexpr int COLOR_BTNFACE = 15;
inline constexpr int COLOR_BTNSHADOW = 16;
inline constexpr int COLOR_GRAYTEXT = 17;
inline constexpr int COLOR_BTNTEXT = 18;
inline constexpr int COLOR_INFOTEXT = 23;
inline constexpr int COLOR_INFOBK = 24;
/// The desktop's colour for the index, 0 for an unknown one.
DWORD GetSysColor(int index);

HBRUSH CreateSolidBrush(COLORREF colour);
/// @param brush  also COLOR_... + 1
int FillRect(HDC dc, const RECT* rectangle, HBRUSH brush);

inline constexpr int PS_SOLID = 0;
inline constexpr int PS_DASH = 1;
inline constexpr int PS_DOT = 2;
inline constexpr int PS_NULL = 5;
/// @param width  0 and 1 give one pixel
HPEN CreatePen(int style, int width, COLORREF colour);

BOOL MoveToEx(HDC dc, int x, int y, POINT* former);
/// From the current position; with a pen of one pixel the end point itself is not drawn.
BOOL LineTo(HDC dc, int x, int y);
BOOL GetCurrentPositionEx(HDC dc, POINT* position);
BOOL Polyline(HDC dc, const POINT* points, int count);
/// Shapes are outlined with the pen and filled with the brush; right and bottom lie outside.
BOOL Rectangle(HDC dc, int left, int top, int right, int bottom);
BOOL Ellipse(HDC dc, int left, int top, int right, int bottom);
/// The part of the ellipse from the ray through the start to the one through the end,
/// counter-clockwise; not filled.
BOOL Arc(HDC dc, int left, int top, int right, int bottom, int start_x, int start_y, int end_x,
         int end_y);

// --- text --------------------------------------------------------------------------------------

inline constexpr int LF_FACESIZE = 32;
struct LOGFONTA {
    LONG lfHeight; ///< above 0: of the cell; below 0: of the characters
    LONG lfWidth;  ///< average of a character; 0: as the face has it
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    char lfFaceName[LF_FACESIZE];
};
inline constexpr int FW_NORMAL = 400;
inline constexpr int FW_BOLD = 700;
inline constexpr BYTE ANSI_CHARSET = 0;
inline constexpr BYTE DEFAULT_CHARSET = 1;
inline constexpr BYTE OUT_DEFAULT_PRECIS = 0;
inline constexpr BYTE CLIP_DEFAULT_PRECIS = 0;
inline constexpr BYTE PROOF_QUALITY = 2;
inline constexpr BYTE FIXED_PITCH = 1;
inline constexpr BYTE VARIABLE_PITCH = 2;
inline constexpr BYTE FF_SWISS = 0x20;
inline constexpr BYTE FF_MODERN = 0x30;

/// A face that the desktop does not have gives the nearest one.
HFONT CreateFontIndirectA(const LOGFONTA* font);

struct TEXTMETRICA {
    LONG tmHeight; ///< ascent + descent
    LONG tmAscent;
    LONG tmDescent;
    LONG tmInternalLeading;
    LONG tmExternalLeading;
    LONG tmAveCharWidth;
    LONG tmMaxCharWidth;
    LONG tmWeight;
    LONG tmOverhang;
    LONG tmDigitizedAspectX;
    LONG tmDigitizedAspectY;
    BYTE tmFirstChar;
    BYTE tmLastChar;
    BYTE tmDefaultChar;
    BYTE tmBreakChar;
    BYTE tmItalic;
    BYTE tmUnderlined;
    BYTE tmStruckOut;
    BYTE tmPitchAndFamily; ///< bit 0 set: widths vary
    BYTE tmCharSet;
};
BOOL GetTextMetricsA(HDC dc, TEXTMETRICA* metrics);
/// The face that the selected font really has.
/// @return bytes written with the closing zero; with a null buffer, the bytes that it would take.
int GetTextFaceA(HDC dc, int size, LPSTR face);

/// @param text  UTF-8; a character cut off at the end is drawn as a replacement character
BOOL TextOutA(HDC dc, int x, int y, LPCSTR text, int length);
BOOL GetTextExtentPoint32A(HDC dc, LPCSTR text, int length, SIZE* size);
/// @param fit      how many bytes fit into max_extent, never a part of a character; may be null
/// @param extents  for each byte of the text, the width up to the end of its character; may be null
BOOL GetTextExtentExPointA(HDC dc, LPCSTR text, int length, int max_extent, int* fit, int* extents,
                           SIZE* size);

inline constexpr UINT TA_LEFT = 0;
inline constexpr UINT TA_UPDATECP = 1;
inline constexpr UINT TA_RIGHT = 2;
inline constexpr UINT TA_CENTER = 6;
inline constexpr UINT TA_TOP = 0;
inline constexpr UINT TA_BOTTOM = 8;
inline constexpr UINT TA_BASELINE = 24;
inline constexpr UINT GDI_ERROR = 0xFFFFFFFF;
/// @return the former alignment, GDI_ERROR on failure.
UINT SetTextAlign(HDC dc, UINT alignment);
/// @return the former colour, CLR_INVALID on failure.
COLORREF SetTextColor(HDC dc, COLORREF colour);
COLORREF SetBkColor(HDC dc, COLORREF colour);
inline constexpr int TRANSPARENT = 1;
inline constexpr int OPAQUE = 2;
/// OPAQUE, as every device context begins, fills the text's cell with the background colour.
int SetBkMode(HDC dc, int mode);
