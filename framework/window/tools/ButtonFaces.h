#pragma once
// The faces of bitmap buttons, pixel by pixel: each side 4 pixels longer than the picture's.

#include "platform/desktop/drawing.h"

namespace kelvo::button_faces {

// Each gives a new bitmap of the caller's, or 0 when `bitmap` is none.

/// A raised face with the picture in its middle.
HBITMAP Raised(HDC context, HBITMAP bitmap);
/// A sunken face with the picture a pixel further right and down; its inner edge is a shade of the
/// background.
HBITMAP Sunken(HDC context, HBITMAP bitmap, COLORREF background);
/// A copy in which everything that has not the colour of the pixel (1, 1) is grey.
HBITMAP Greyed(HDC context, HBITMAP image);

/// Width and height of a bitmap; 0 when it is none.
SIZE SizeOf(HBITMAP bitmap);
/// Copies so much of the image to (0, 0).
void Draw(HDC context, HBITMAP image, SIZE size);

} // namespace kelvo::button_faces
