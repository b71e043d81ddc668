#include "framework/window/CDc.h"
#include "framework/window/dialogs/FileDialogs.h"
#include "platform/desktop/drawing.h"
#include "tests/gallery/Exhibits.h"

namespace kelvo::gallery {
namespace {

const FileDialogTexts& Texts() {
    static const FileDialogTexts texts{"Filmati (*.kva)|*.kva|", "Scegliere un filmato"};
    return texts;
}

} // namespace

void ShowOpenFile() {
    Report((CString("file ") + ChooseFile(nullptr, FileDialogKind::Open, Texts(), "")).Text());
}

void ShowSaveFile() {
    Report((CString("file ") + ChooseFile(nullptr, FileDialogKind::Save, Texts(), "")).Text());
}

void ShowFontChoice() {
    const HFONT current = CDc::FixedFont(16, 0);
    const HFONT chosen = CDc::ChooseFont(nullptr, current);
    LOGFONTA font{};
    if (chosen == nullptr) {
        Report("no font");
    } else if (GetObjectA(chosen, sizeof font, &font) != 0) {
        Report(CString::Formatted("font %s, height %d", font.lfFaceName,
                                  static_cast<int>(font.lfHeight))
                   .Text());
        DeleteObject(chosen);
    }
    DeleteObject(current);
}

} // namespace kelvo::gallery
