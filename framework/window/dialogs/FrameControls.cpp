#include "framework/window/dialogs/FrameControls.h"

#include "framework/window/CDc.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/windows.h"

namespace kelvo {
namespace {

constexpr COLORREF kShadow = 0x7F7F7F;
constexpr COLORREF kLight = 0xFFFFFF;

} // namespace

int DrawFrameControl(HWND control, HDC context, int control_id) {
    if (control_id != kSunkenFrameId && control_id != kRaisedFrameId) return 0;
    RECT client{};
    GetClientRect(control, &client);
    FillRect(context, &client, static_cast<HBRUSH>(GetStockObject(LTGRAY_BRUSH)));

    const bool is_sunken = control_id == kSunkenFrameId;
    const COLORREF top_left = is_sunken ? kShadow : kLight;
    const COLORREF bottom_right = is_sunken ? kLight : kShadow;
    const LONG right = client.right - 1;
    const LONG bottom = client.bottom - 1;
    const CDc dc(context);
    dc.DrawLine(0, 0, right, 0, 1, top_left);
    dc.DrawLine(0, 0, 0, bottom, 1, top_left);
    dc.DrawLine(0, bottom, right, bottom, 1, bottom_right);
    dc.DrawLine(right, 0, right, bottom, 1, bottom_right);
    return 1;
}

} // namespace kelvo
