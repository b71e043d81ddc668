#include "framework/window/dialogs/InputBox.h"

#include "framework/base/XLanguageInfoClass.h"
#include "framework/window/CDialog.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr int kTemplateId = 1209;
constexpr char kTemplate[] = "MsgBoxDlg";
constexpr int kPrompt = 100;
constexpr int kValue = 101;
constexpr int kFirstButton = 1;
constexpr int kSecondButton = 2;

class InputBoxDialog : public CDialog {
public:
    InputBoxDialog(const InputBoxTexts& texts, const CString& initial)
        : texts_(texts), value_(initial) {}

    const CString& Value() const { return value_; }

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (CDialog::HandleMessage(message, wparam, lparam)) return true;
        switch (message) {
        case WM_INITDIALOG:
            return OnInitialise();
        case WM_COMMAND:
            return HIWORD(wparam) == BN_CLICKED && OnCommand(LOWORD(wparam));
        default:
            return false;
        }
    }

private:
    bool OnInitialise() {
        if (!value_.IsEmpty()) SetControlText(kValue, value_);
        SetControlText(kPrompt, texts_.prompt);
        SetControlText(kFirstButton, texts_.first_button);
        SetControlText(kSecondButton, texts_.second_button);
        SetText(texts_.caption.Text());
        return true;
    }

    bool OnCommand(int control_id) {
        switch (control_id) {
        case kFirstButton:
            value_ = ControlText(kValue);
            EndDialog(1);
            return true;
        case kSecondButton:
            EndDialog(0);
            return true;
        default:
            return false;
        }
    }

    const InputBoxTexts& texts_;
    CString value_;
};

} // namespace

CString InputBox(const InputBoxTexts& texts, const CString& initial, CWin* owner) {
    InputBoxDialog dialog(texts, initial);
    const LPARAM result =
        dialog.ModalRun(owner, XLanguageInfoClass::Translate(kTemplateId, kTemplate));
    return result != 0 ? dialog.Value() : initial;
}

} // namespace kelvo
