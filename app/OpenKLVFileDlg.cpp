#include "app/OpenKLVFileDlg.h"

#include "framework/window/dialogs/FileDialogs.h"
#include "platform/desktop/common_dialogs.h"
#include "platform/desktop/dialogs.h"

#include <string>
#include <utility>

namespace kelvo {
namespace {

constexpr char kTemplate[] = "OpenKLVFileDlg";
constexpr char kDamagedText[] = "File danneggiato o non riconosciuto!";

constexpr int kNoteControl = 104;
constexpr UINT kPreviewDecoded = WM_USER + 32;

/// The area of the preview, in dialog units.
constexpr struct {
    int left = 294;
    int top = 1;
    int width = 196;
    int height = 148;
} kPreviewArea;

} // namespace

OpenKLVFileDlg::OpenKLVFileDlg(PreviewDecoder::Decode decode) : decoder_(std::move(decode)) {
    ResourceName(kTemplate);
}

OpenKLVFileDlg::~OpenKLVFileDlg() = default;

CString OpenKLVFileDlg::Run(CWin* owner, const CString& initial_file_name, const CString& filter,
                            const CString& title) {
    return ChooseFileWithTemplate(owner, FileDialogKind::Open, {.filter = filter, .title = title},
                                  CString(), initial_file_name, *this);
}

bool OpenKLVFileDlg::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CDialog::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case WM_INITDIALOG:
        return OnInitDialog();
    case WM_NOTIFY:
        return OnNotify(lparam);
    case kPreviewDecoded:
        return OnPreviewDecoded(static_cast<std::uint32_t>(wparam));
    case WM_DESTROY:
        decoder_.Forget();
        return false;
    default:
        return false;
    }
}

bool OpenKLVFileDlg::OnInitDialog() {
    ShowNote("");
    preview_.SetParent(this);
    preview_.SetStyle(WS_CHILD | WS_VISIBLE);
    preview_.SetPlacement(HorizontalPixels(kPreviewArea.left), VerticalPixels(kPreviewArea.top),
                          HorizontalPixels(kPreviewArea.width),
                          VerticalPixels(kPreviewArea.height));
    preview_.Create();
    return false;
}

bool OpenKLVFileDlg::OnNotify(LPARAM lparam) {
    switch (reinterpret_cast<const NMHDR*>(lparam)->code) {
    case CDN_SELCHANGE:
        OnSelectionChanged();
        break;
    case CDN_FOLDERCHANGE: // nothing is selected in it yet
        ShowNothing();
        break;
    default:
        break;
    }
    return false; // the file dialog goes on
}

void OpenKLVFileDlg::OnSelectionChanged() {
    CString path = SelectedPath();
    if (path == selected_path_) return;
    ShowNothing();
    selected_path_ = std::move(path);
    if (!selected_path_.IsEmpty()) decoder_.Ask(selected_path_, Window(), kPreviewDecoded);
}

void OpenKLVFileDlg::ShowNothing() {
    decoder_.Forget();
    selected_path_ = CString();
    ShowNote("");
    preview_.ShowPlaceholder();
}

bool OpenKLVFileDlg::OnPreviewDecoded(std::uint32_t number) {
    std::optional<Preview> preview = decoder_.Take(number);
    if (!preview) return true; // of a file that was selected before
    if (preview->kind == Preview::Kind::Picture) preview_.Show(std::move(preview->picture));
    if (preview->kind == Preview::Kind::Damaged) ShowNote(kDamagedText);
    return true;
}

// The note lies on the preview: while it says nothing, it is not there.
void OpenKLVFileDlg::ShowNote(const char* text) {
    const HWND note = Control(kNoteControl);
    SetControlText(kNoteControl, text);
    ShowWindow(note, *text == '\0' ? SW_HIDE : SW_SHOW);
    SetWindowPos(note, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

CString OpenKLVFileDlg::SelectedPath() const {
    const HWND file_dialog = GetParent(Window());
    const LRESULT room = SendMessageA(file_dialog, CDM_GETFILEPATH, 0, 0);
    if (room <= 1) return {};
    std::string path(static_cast<std::size_t>(room), '\0');
    SendMessageA(file_dialog, CDM_GETFILEPATH, path.size(), reinterpret_cast<LPARAM>(path.data()));
    return CString(path.c_str());
}

} // namespace kelvo
