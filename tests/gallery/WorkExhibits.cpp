#include "app/ProgressBarDialogkel.h"
#include "app/RecompressDlgkel.h"
#include "framework/window/CWin.h"
#include "framework/window/LUM.h"
#include "platform/base/threads.h"
#include "platform/desktop/messages.h"
#include "tests/gallery/Exhibits.h"

namespace kelvo::gallery {
namespace {

constexpr int kSteps = 400;
constexpr DWORD kStep_ms = 25;
constexpr RewriteParameters kStrongerPicture{.compression_type = 4, .key_interval = 25};

/// Shown while there is nothing else to close.
class InformationOwner : public CWin {
public:
    InformationOwner() {
        SetTitle("Galleria - informazione");
        SetPlacement(200, 200, 360, 160);
        SetBackgroundColour(0xE0E0E0);
        SetPaintBackground(true);
    }
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (CWin::HandleMessage(message, wparam, lparam)) return true;
        if (message == WM_CREATE) lum.ShowInformation("Prima riga\r\nSeconda riga");
        if (message == WM_LBUTTONDOWN) lum.ShowInformation("Un altro testo");
        if (message == WM_RBUTTONDOWN) lum.HideInformation();
        return false;
    }
};

} // namespace

void ShowProgress() {
    ProgressBarDialogkel dialog;
    dialog.Start(nullptr, "Operazione in corso...");
    int step = 0;
    while (step <= kSteps && dialog.Update(step, kSteps)) {
        Sleep(kStep_ms);
        ++step;
    }
    Report(dialog.IsCancelled() ? "stopped" : "done");
    dialog.Close();
    lum.ProcessMessages();
}

void ShowRecompression() {
    RecompressDlgkel dialog(Argument().c_str(), kStrongerPicture, 'V');
    Report(dialog.Run(nullptr) ? "rewritten" : "untouched");
}

void ShowInformationWindow() {
    InformationOwner owner;
    owner.ModalRun(nullptr);
    lum.HideInformation();
}

} // namespace kelvo::gallery
