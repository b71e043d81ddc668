#include "framework/window/CDialog.h"

#include "framework/base/MemCheck.h"
#include "framework/base/XLanguageInfoClass.h"
#include "framework/window/LUM.h"
#include "framework/window/WindowProcedures.h"
#include "platform/base/message_boxes.h"
#include "platform/base/resources.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/drawing.h"

namespace kelvo {
namespace {

constexpr char kNoResourceName[] =
    "CDialog::CreateDlg() è stata chiamata senza nome risorsa. CHIAMARE CDialog::CreateDlg() CON "
    "UN NOME RISORSA OPPURE IMPOSTARLA PRIMA DELLA CHIAMTA A CDialog::CreateDlg() TRAMITE LA "
    "FUNZIONE: CDialog::ResourceName()";
constexpr char kNotStarted[] = "CHIAMARE lum.Start() prima di creare oggetti CDialog!";
constexpr char kNoResourceModule[] = "CHIAMARE lum.SetDllIst() prima di creare oggetti CDialog!";
constexpr char kTemplateMissing[] = "Risorsa: ";
constexpr char kTemplateMissingCaption[] = "Risorsa non trovata!";
constexpr char kLoadFailed[] = "LoadResource() fallita!";
constexpr char kLockFailed[] = "LockResource() fallito!";
constexpr char kCreateDlgCaption[] = "CDialog::CreateDlg()";
constexpr int kClassLabelId = 1058;
constexpr char kClassLabel[] = "Classe : ";
constexpr int kTitleLabelId = 1059;
constexpr char kTitleLabel[] = "Titolo : ";
constexpr char kLabelEnd[] = ",  ";
constexpr int kNotCreatedCaptionId = 1060;
constexpr char kNotCreatedCaption[] = "FINESTRA NON CREATA CDialog::Create(void)";

constexpr std::uint32_t kDialogAndStatic = 5;

} // namespace

CDialog::CDialog(std::uint32_t class_id)
    : CWin(class_id), dialog_background_(GetSysColor(COLOR_BTNFACE)),
      background_mask_(kDialogAndStatic) {}

CDialog::~CDialog() {
    // While this is still a dialog, so that its handler sees WM_DESTROY.
    if (HasWindow()) DestroyWindow(Window());
    // One that is on its way out has messages still to come, and they find no object any more.
    if (GetWindowLongPtrA(Window(), kDialogObjectOffset) == reinterpret_cast<LONG_PTR>(this)) {
        BindDialog(Window(), nullptr);
    }
    DeleteStaticBitmaps(static_bitmaps_);
    DeleteSchemeBrushes();
    for (RTFEditInfoStruct& record : rich_texts_)
        MemRelease(record.data);
}

bool CDialog::HasInstance() {
    if (Instance() == nullptr) SetInstance(lum.Instance());
    return Instance() != nullptr || ErrorBox(kNotStarted);
}

int CDialog::CreateDlg(LPCSTR name) {
    if (name != nullptr) resource_name_ = name;
    if (resource_name_.IsEmpty()) return ErrorBox(kNoResourceName) ? 1 : 0;
    if (!HasInstance()) return 0;
    if (lum.ResourceIst() == nullptr) return ErrorBox(kNoResourceModule) ? 1 : 0;
    const void* const found = LoadTemplate();
    if (found == nullptr) return 0;
    SetWindow(nullptr);
    const HWND made = CreateDialogIndirectParamA(Instance(), static_cast<const DLGTEMPLATE*>(found),
                                                 Parent() != nullptr ? Parent()->Window() : nullptr,
                                                 LumDlgProc, reinterpret_cast<LPARAM>(this));
    if (made == nullptr) {
        // A dialog that was there and ended itself at once is no failure to report.
        if (Window() == nullptr) ShowNotCreated();
        return 0;
    }
    BindDialog(made, this);
    return 1;
}

const void* CDialog::LoadTemplate() const {
    const HMODULE module = lum.ResourceIst();
    HRSRC found = FindResourceA(module, resource_name_.Text(), RT_DIALOG);
    if (found == nullptr) found = FindResourceExA(module, RT_DIALOG, resource_name_.Text(), 0);
    if (found == nullptr) {
        CString text = kTemplateMissing;
        text += resource_name_;
        ErrorBox(text, Caption{kTemplateMissingCaption});
        return nullptr;
    }
    const HGLOBAL loaded = LoadResource(module, found);
    if (loaded == nullptr) {
        MessageBoxA(nullptr, kLoadFailed, kCreateDlgCaption, MB_OK);
        return nullptr;
    }
    const void* const locked = LockResource(loaded);
    if (locked == nullptr) MessageBoxA(nullptr, kLockFailed, kCreateDlgCaption, MB_OK);
    return locked;
}

void CDialog::ShowNotCreated() const {
    CString text = XLanguageInfoClass::Translate(kClassLabelId, kClassLabel);
    text += WindowClass();
    text += kLabelEnd;
    text += XLanguageInfoClass::Translate(kTitleLabelId, kTitleLabel);
    text += Title();
    text += kLabelEnd;
    MessageBoxA(nullptr, text.Text(),
                XLanguageInfoClass::Translate(kNotCreatedCaptionId, kNotCreatedCaption), MB_OK);
}

int CDialog::CreateModeless(CWin* owner, LPCSTR resource_name) {
    if (HasWindow()) return 0;
    SetInstance(owner != nullptr ? owner->Instance() : lum.Instance());
    SetParent(owner);
    modal_running_ = false;
    return CreateDlg(resource_name);
}

void CDialog::EndDialog(LPARAM result) {
    if (modal_running_) {
        Post(kEndDialogMessage, 0, result);
    } else {
        DestroyWindow(Window());
    }
}

void CDialog::SetControlHelp(int id, LPCSTR text) {
    context_help_.Register(id, text);
    has_context_help_ = true;
}

void CDialog::BeginToolTips() {
    tool_tips_.Begin(Window());
}

} // namespace kelvo
