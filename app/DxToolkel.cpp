#include "app/DxToolkel.h"

#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr LONG kSliderEnd = 255;
constexpr int kVolumeStep = 255; ///< of one slider position
constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kGreen = RGB(0, 255, 0);

WNDPROC slider_procedure = nullptr; // of every trackbar

// The dialog stands in a window that has no dialog's loop: nobody else would lead on from here.
LRESULT SliderProcedure(HWND slider, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_KEYDOWN && wparam == VK_TAB) {
        PostMessageA(GetParent(GetParent(slider)), message, wparam, lparam);
        return 0;
    }
    return CallWindowProcA(slider_procedure, slider, message, wparam, lparam);
}

} // namespace

bool DxToolkel::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) OnInitDialog();
    if (message == WM_HSCROLL && OnScroll(reinterpret_cast<HWND>(lparam))) return true;
    return CDialog::HandleMessage(message, wparam, lparam);
}

void DxToolkel::OnInitDialog() {
    InitCommonControls();
    SendDlgItemMessageA(Window(), kVolumeSlider, TBM_SETRANGE, TRUE, MAKELONG(0, kSliderEnd));
    slider_procedure = reinterpret_cast<WNDPROC>(SetWindowLongPtrA(
        Control(kVolumeSlider), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&SliderProcedure)));
    SetControlColours(kElapsedLabel, kRed, kBlack);
    SetControlColours(kTotalLabel, kGreen, kBlack);
}

bool DxToolkel::OnScroll(HWND control) {
    if (control != Control(kVolumeSlider) || Parent() == nullptr) return false;
    const LRESULT position = SendMessageA(control, TBM_GETPOS, 0, 0);
    Parent()->HandleNotification(kVolumeChanged, position * kVolumeStep, 0);
    return true;
}

void DxToolkel::SetLabel(int id, const CString& text) const {
    SetControlText(id, text);
}

void DxToolkel::TakeKeyboard() const {
    SetFocus(Control(kVolumeSlider));
}

void DxToolkel::SetVolumePosition(WORD volume) const {
    SendDlgItemMessageA(Window(), kVolumeSlider, TBM_SETPOS, TRUE, volume / kVolumeStep);
}

} // namespace kelvo
