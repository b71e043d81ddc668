#include "framework/window/CDc.h"
#include "framework/window/CDialog.h"
#include "framework/window/LUM.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"
#include "tests/gallery/Exhibits.h"

namespace kelvo::gallery {
namespace {

constexpr int kLabel = 110;
constexpr int kOk = 1;
constexpr int kWhatIsThis = 3;
constexpr int kFirstButton = 201;
constexpr int kLastButton = 205;
constexpr COLORREF kLightBlue = 0xFFE8D0;

struct Picture {
    int control_id;
    UINT flags;
};
constexpr Picture kPictures[] = {
    {211, kDrawCentre | kDrawMiddle},
    {212, kDrawStretch},
    {213, kDrawNoScale | kDrawCentre | kDrawMiddle | kDrawReplaceBackground},
};

class PicturesDialog : public CDialog {
public:
    PicturesDialog() {
        AddOwnerDrawBtn(201, "lumBtmpPanOn", "lumBtmpPanOff");
        AddOwnerDrawBtn(202, "lumBtmpZoomPlusOn", "lumBtmpZoomPlusOff", GetSysColor(COLOR_BTNFACE));
        AddOwnerDrawBtn(203, "lumBtmpZoomMinusOn", "lumBtmpZoomMinusOff", kLightBlue);
        AddOwnerDrawBtn(204, "lumBtmpZoomWinOn", "lumBtmpZoomWinOff");
        AddBitmap(205, "ZuvaLogosBmp");
        for (const Picture& one : kPictures) {
            AddStaticBitmap({.bitmap = LoadBitmapA(lum.ResourceIst(), "lum32Bitmpap"),
                             .flags = one.flags,
                             .control_id = one.control_id,
                             .owns_bitmap = 1,
                             .background = kLightBlue});
        }
        SetControlHelp(201, "Sposta l'immagine nella finestra");
        SetControlHelp(202, "Ingrandisce");
        SetControlHelp(kLabel, "Un doppio clic apre il testo alla modifica");
        SetControlHelp(kOk, "Chiude la finestra");
        MakeLabelEditable(kLabel);
    }

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (CDialog::HandleMessage(message, wparam, lparam)) return true;
        switch (message) {
        case WM_INITDIALOG:
            return true;
        case WM_COMMAND:
            return HIWORD(wparam) == BN_CLICKED && OnButton(LOWORD(wparam));
        default:
            return false;
        }
    }

private:
    bool OnButton(int id) {
        if (id >= kFirstButton && id <= kLastButton) {
            Report(CString::Formatted("button %d", id).Text());
        } else if (id == kWhatIsThis) {
            BeginToolTips();
        } else if (id == kOk || id == IDCANCEL) {
            Report((CString("label ") + ControlText(kLabel)).Text());
            EndDialog(id);
        } else {
            return false;
        }
        return true;
    }
};

} // namespace

void ShowPictures() {
    PicturesDialog dialog;
    const LPARAM result = dialog.ModalRun(nullptr, "GALLERYPICTURES");
    Report(CString::Formatted("result %d", static_cast<int>(result)).Text());
}

} // namespace kelvo::gallery
