#include "framework/window/CDialog.h"
#include "framework/window/Questions.h"
#include "framework/window/dialogs/InputBox.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"
#include "tests/gallery/Exhibits.h"

#include <vector>

namespace kelvo::gallery {
namespace {

constexpr int kFixed = 101;
constexpr int kSignificant = 103;
constexpr int kInteger = 105;
constexpr int kFirstBox = 111;
constexpr int kLastBox = 113;
constexpr int kList = 120;
constexpr int kCombo = 121;
constexpr int kNote = 130;
constexpr COLORREF kDarkRed = 0x000080;
constexpr COLORREF kLightYellow = 0xC0FFFF;

const std::vector<CString>& Cities() {
    static const std::vector<CString> cities = {"Ancona", "Bologna", "Cagliari", "Firenze",
                                                "Forlì"};
    return cities;
}

/// Every kind of control that a dialog reads and writes.
class ControlsDialog : public CDialog {
public:
    ControlsDialog() { SetControlColours(kNote, kDarkRed, kLightYellow); }

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (CDialog::HandleMessage(message, wparam, lparam)) return true;
        switch (message) {
        case WM_INITDIALOG:
            return OnInitialise();
        case WM_COMMAND:
            return HIWORD(wparam) == BN_CLICKED && OnButton(LOWORD(wparam));
        default:
            return false;
        }
    }
    bool OnSelectionChanged(HWND /*control*/, int id, int index) override {
        const CString text = CString::Formatted("control %d: item %d", id, index);
        SetControlText(kNote, text);
        Report(text.Text());
        return true;
    }
    bool OnDropDown(HWND /*control*/, int id) override {
        Report(CString::Formatted("control %d: open", id).Text());
        return true;
    }
    bool OnCloseUp(HWND /*control*/, int id) override {
        Report(CString::Formatted("control %d: closed", id).Text());
        return true;
    }

private:
    bool OnInitialise() {
        SetControlFixed(kFixed, 1234567890.123456);
        SetControlDouble(kSignificant, 2.0 / 3, 6);
        SetControlInteger(kInteger, -42);
        SetCheckedBoxes(kFirstBox, kLastBox, 0b101);
        for (const CString& city : Cities()) {
            for (const auto& [id, add] : {std::pair{kList, LB_ADDSTRING}, {kCombo, CB_ADDSTRING}}) {
                SendDlgItemMessageA(Window(), id, add, 0, reinterpret_cast<LPARAM>(city.Text()));
            }
        }
        MakeItemsEditable(kList);
        return true;
    }
    bool OnButton(int id) {
        if (id != 1 && id != 2) return false;
        Report(CString::Formatted("fixed %.6f, integer %d, boxes %u", ControlDouble(kFixed),
                                  ControlInt(kInteger), CheckedBoxes(kFirstBox, kLastBox))
                   .Text());
        EndDialog(id == 1 ? 5 : 0);
        return true;
    }
};

} // namespace

void ShowMessageBoxes() {
    CObj::ErrorBox("Il file non può essere aperto.");
    CObj::WarningBox("Spazio quasi esaurito: %d %%", 97);
    Report(CObj::ConfirmBox("Continuare?") ? "yes" : "no");
}

void ShowInputBox() {
    const InputBoxTexts texts{"Nuovo nome", "Nome della traccia:", "Conferma", "Lascia com'è"};
    Report((CString("value ") + InputBox(texts, "Senza titolo", nullptr)).Text());
}

void ShowStringDialog() {
    const CString text = EnterString("così", "Titolo del filmato",
                                     "Scrivere il titolo del filmato n. %d.\r\n"
                                     "Apparirà nella barra della finestra.",
                                     7);
    Report((CString("text ") + text).Text());
}

void ShowListDialog() {
    std::int32_t selected = 2;
    const int result =
        ChooseFromList(Cities(), selected, "Città",
                       "Scegliere una delle %d città:", static_cast<int>(Cities().size()));
    Report(CString::Formatted("result %d, item %d", result, selected).Text());
}

void ShowControls() {
    ControlsDialog dialog;
    const LPARAM result = dialog.ModalRun(nullptr, "GALLERYCONTROLS");
    Report(CString::Formatted("result %d", static_cast<int>(result)).Text());
}

} // namespace kelvo::gallery
