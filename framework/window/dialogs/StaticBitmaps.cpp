#include "framework/window/dialogs/StaticBitmaps.h"

#include "framework/window/CDc.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/drawing.h"

namespace kelvo {

bool DrawStaticBitmap(const CArray<StaticControlBitmap>& records, const DRAWITEMSTRUCT& item) {
    for (const StaticControlBitmap& record : records) {
        if (static_cast<UINT>(record.control_id) != item.CtlID) continue;
        const int former = SetStretchBltMode(item.hDC, HALFTONE);
        CDc(item.hDC).DrawBitmap(record.bitmap, item.rcItem, record.flags, record.background);
        SetStretchBltMode(item.hDC, former);
        return true;
    }
    return false;
}

void DeleteStaticBitmaps(CArray<StaticControlBitmap>& records) {
    for (const StaticControlBitmap& record : records) {
        if (record.owns_bitmap != 0) DeleteObject(record.bitmap);
    }
    records.Clear();
}

} // namespace kelvo
