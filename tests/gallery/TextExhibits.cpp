#include "framework/base/CString.h"
#include "framework/window/CDialog.h"
#include "framework/window/dialogs/LumAboutDlg.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"
#include "tests/gallery/Exhibits.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kelvo::gallery {
namespace {

constexpr char kRichText[] =
    "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}{\\f1 Times New Roman;}}"
    "{\\colortbl;\\red192\\green0\\blue0;\\red0\\green64\\blue160;\\red255\\green240\\blue120;}"
    "\\pard\\qc\\fs36\\b\\cf1 Caff\\'e8 pi\\'f9 buono\\par"
    "\\pard\\qj\\sb120\\plain\\f1\\fs24 Testo {\\b grassetto}, {\\i corsivo}, {\\ul sottolineato}, "
    "{\\strike barrato}, {\\cf2 colorato} e {\\highlight3 evidenziato}; "
    "\\u321?\\u243?d\\u378?, \\u917?\\u955?\\u955?\\u940?\\u948?\\u945?.\\par"
    "\\pard\\qr\\plain\\fs20 a destra\\par"
    "\\pard\\li720\\fi-360\\plain\\fs20 \\bullet\\tab rientrato\\par}";
constexpr char kPlainText[] = "Kelvo\r\n\r\nUn testo che si può leggere, cambiare e salvare.\r\n";

/// A file that is gone once the visitor has seen it.
class PassingFile {
public:
    explicit PassingFile(const char* content) {
        std::string pattern = (std::filesystem::temp_directory_path() / "gallery-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        std::ofstream(Name().Text(), std::ios::binary) << content;
    }
    ~PassingFile() { std::filesystem::remove_all(folder_); }
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;

    CString Name() const { return (folder_ + "/testo.txt").c_str(); }

private:
    std::string folder_;
};

/// A document in a control; "Ok" reports how it is written.
class RichTextDialog : public CDialog {
public:
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (CDialog::HandleMessage(message, wparam, lparam)) return true;
        if (message == WM_INITDIALOG) {
            const PassingFile file(kRichText);
            LoadRichText(101, file.Name().Text());
            return true;
        }
        if (message != WM_COMMAND || HIWORD(wparam) != BN_CLICKED) return false;
        if (LOWORD(wparam) == 1) {
            CString written;
            ReadRichText(101, written);
            Report(CString::Formatted("rich text of %d bytes", written.Length()).Text());
            Report((CString("text ") + ControlText(101)).Text());
        }
        EndDialog(LOWORD(wparam));
        return true;
    }
};

} // namespace

void ShowAbout() {
    const PassingFile file(kPlainText);
    LumAboutDlg dialog;
    const LPARAM result = dialog.Show(nullptr, "", file.Name(), LumAboutDlg::Mode::Edit);
    std::ifstream saved(file.Name().Text());
    std::string line;
    std::getline(saved, line);
    Report(CString::Formatted("about %d, saved %s", static_cast<int>(result), line.c_str()).Text());
}

void ShowRichText() {
    CDialog::LoadRichEditSupport();
    RichTextDialog dialog;
    dialog.ModalRun(nullptr, "GALLERYRICHTEXT");
}

} // namespace kelvo::gallery
