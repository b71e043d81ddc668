#include "framework/window/dialogs/LumAboutDlg.h"

#include "framework/base/XLanguageInfoClass.h"
#include "framework/window/CDc.h"
#include "framework/window/LUM.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr int kTemplateId = 1210;
constexpr char kTemplate[] = "LumAboutDlg";
constexpr char kNotSaved[] = "Impossibile salvare il file:\r\n\r\n%s";

constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr int kSave = 3;
constexpr int kFont = 4;
constexpr int kPicture = 200;

constexpr int kEditorWidth = 454; // dialog units
constexpr int kEditorHeight = 322;
constexpr COLORREF kPaper = 0xF9FFFF;
constexpr int kFontHeight = 16;

/// The kernel's last default bitmap, "lum32Bitmpap".
constexpr std::size_t kAboutBitmap = LUM::kBitmapCount - 1;

} // namespace

LumAboutDlg::LumAboutDlg() {
    editor_.SetStyle(WS_VISIBLE | WS_CHILD | WS_BORDER | WS_VSCROLL | WS_TABSTOP | ES_MULTILINE |
                     ES_AUTOVSCROLL | ES_WANTRETURN);
    editor_.SetParent(this);
}

LumAboutDlg::~LumAboutDlg() {
    if (HasWindow()) DestroyWindow(Window()); // while the editor can still hear of it
    if (font_ != nullptr) DeleteObject(font_);
    if (paper_ != nullptr) DeleteObject(paper_);
}

LPARAM LumAboutDlg::Show(CWin* owner, const CString& title, const CString& file_name, Mode mode) {
    SetTitle(title.Text());
    file_name_ = file_name;
    mode_ = mode;
    return ModalRun(owner, XLanguageInfoClass::Translate(kTemplateId, kTemplate));
}

bool LumAboutDlg::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CDialog::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case WM_INITDIALOG:
        return OnInitialise();
    case WM_COMMAND:
        return HIWORD(wparam) == BN_CLICKED && OnCommand(LOWORD(wparam));
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORSTATIC:
        return OnColourEditor(reinterpret_cast<HDC>(wparam), reinterpret_cast<HWND>(lparam));
    default:
        return false;
    }
}

bool LumAboutDlg::OnInitialise() {
    if (!has_picture_ && lum.DefaultBitmap(kAboutBitmap) != nullptr) {
        has_picture_ = true;
        AddStaticBitmap({.bitmap = lum.DefaultBitmap(kAboutBitmap),
                         .flags = kDrawNoScale | kDrawReplaceBackground | kDrawCentre | kDrawMiddle,
                         .control_id = kPicture,
                         .background = GetSysColor(COLOR_BTNFACE)});
    }
    PlaceEditor();
    file_.Load(file_name_);
    const bool is_read_only = mode_ == Mode::ReadOnly || !file_.MaySave();
    editor_.SetText(file_.Text().c_str());
    if (is_read_only) {
        editor_.Send(EM_SETREADONLY, TRUE, 0);
        EnableWindow(Control(kSave), FALSE);
        return true;
    }
    SetFocus(editor_.Window());
    SetMessageResult(FALSE); // the focus has been set
    return true;
}

void LumAboutDlg::PlaceEditor() {
    editor_.SetPlacement(0, 0, HorizontalPixels(kEditorWidth), VerticalPixels(kEditorHeight));
    if (editor_.Create() == 0) return;
    if (paper_ == nullptr) paper_ = CreateSolidBrush(kPaper);
    if (font_ == nullptr) font_ = CDc::FixedFont(kFontHeight, 0);
    editor_.Send(WM_SETFONT, reinterpret_cast<WPARAM>(font_), TRUE);
    editor_.Send(EM_LIMITTEXT, 0, 0); // as long as it likes
}

bool LumAboutDlg::OnCommand(int control_id) {
    switch (control_id) {
    case kOk:
        EndDialog(1);
        return true;
    case kCancel:
        EndDialog(0);
        return true;
    case kSave:
        Save();
        return true;
    case kFont:
        ChooseEditorFont();
        return true;
    default:
        return false;
    }
}

bool LumAboutDlg::OnColourEditor(HDC context, HWND control) {
    if (control != editor_.Window() || paper_ == nullptr) return false;
    SetBkColor(context, kPaper);
    SetTextColor(context, 0x000000);
    SetMessageResult(reinterpret_cast<LRESULT>(paper_));
    return true;
}

void LumAboutDlg::Save() {
    if (mode_ == Mode::ReadOnly || !file_.MaySave()) return;
    CString text;
    const LRESULT length = editor_.Send(WM_GETTEXTLENGTH, 0, 0);
    char* const room = text.RawBuffer(static_cast<std::int32_t>(length) + 1);
    if (room == nullptr) return;
    editor_.Send(WM_GETTEXT, static_cast<WPARAM>(length) + 1, reinterpret_cast<LPARAM>(room));
    if (!file_.Save(text.Text())) ErrorBox(CString::Formatted(kNotSaved, file_name_.Text()));
}

void LumAboutDlg::ChooseEditorFont() {
    const HFONT chosen = CDc::ChooseFont(this, font_);
    if (chosen == nullptr) return;
    editor_.Send(WM_SETFONT, reinterpret_cast<WPARAM>(chosen), TRUE);
    DeleteObject(font_);
    font_ = chosen;
}

bool LumAboutDlg::Editor::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (wparam == VK_ESCAPE && message == WM_GETDLGCODE) {
        // Else the dialog would take the key before the editor sees it.
        SetMessageResult(DLGC_WANTALLKEYS);
        return true;
    }
    if (wparam == VK_ESCAPE && message == WM_KEYDOWN) {
        const HWND button = GetDlgItem(Parent()->Window(), kCancel);
        SetFocus(button);
        Parent()->Post(WM_COMMAND, MAKEWPARAM(kCancel, BN_CLICKED),
                       reinterpret_cast<LPARAM>(button));
        return true;
    }
    return CEdit::HandleMessage(message, wparam, lparam);
}

} // namespace kelvo
