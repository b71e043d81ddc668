#pragma once
// Pictures that a dialog shows in its owner-drawn static controls.

#include "framework/base/CArray.h"
#include "platform/base/types.h"

#include <cstdint>

struct DRAWITEMSTRUCT;

namespace kelvo {

/// One control and its picture.
struct StaticControlBitmap {
    HBITMAP bitmap = nullptr;
    UINT flags = 0; ///< DrawFlags of CDc
    int control_id = 0;
    std::uint32_t owns_bitmap = 0;
    COLORREF background = 0; ///< what the picture's background becomes, with kDrawReplaceBackground
};

/// Draws the record of the item's control into the item's rectangle.
/// @return false when no record names the control
bool DrawStaticBitmap(const CArray<StaticControlBitmap>& records, const DRAWITEMSTRUCT& item);

/// Deletes the bitmaps that the records own, then forgets the records.
void DeleteStaticBitmaps(CArray<StaticControlBitmap>& records);

} // namespace kelvo
