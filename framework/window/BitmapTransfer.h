#pragma once
// What a bitmap object needs a window for: drawing it, and taking it from the clipboard. Free
// functions, so that the object itself stays usable where there is no window.

#include "framework/base/Bytes.h"
#include "platform/base/bitmaps.h"
#include "platform/desktop/drawing.h"

#include <functional>

namespace kelvo {

/// Draws a whole picture, scaled to a rectangle; nothing where there is no picture (info null).
/// @param pixels  rows as the header describes them
void DrawPicture(HDC context, int x, int y, int width, int height, const BITMAPINFO* info,
                 const void* pixels);

/// Takes the clipboard's picture, as packed bytes (header, palette, rows).
/// @param build  makes the bitmap object from the bytes, which live only during the call
/// @return false when the clipboard holds no picture or is taken, when the system does not give it
///         (after a box), or when `build` refuses it
bool CreateFromClipboard(HWND owner, const std::function<bool(ByteView packed)>& build);

} // namespace kelvo
