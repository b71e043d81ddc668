#include "framework/window/tools/CButtonInfo.h"

namespace kelvo {

CButtonInfo::CButtonInfo() : CObj(BitmapButton::kClassId) {}

CButtonInfo::~CButtonInfo() {
    button.reset();
    if (not_owned != 0) return;
    for (const HBITMAP image : {normal_image, pressed_image, disabled_image}) {
        if (image != nullptr) DeleteObject(image);
    }
}

} // namespace kelvo
