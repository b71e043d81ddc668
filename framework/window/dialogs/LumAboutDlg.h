#pragma once
// The ready-made dialog that shows a text file in an editor, lets it be changed and saved, and its
// font chosen.

#include "framework/window/CDialog.h"
#include "framework/window/dialogs/EditedTextFile.h"
#include "framework/window/tools/CEdit.h"

namespace kelvo {

class LumAboutDlg : public CDialog {
public:
    /// What may be done with the text.
    enum class Mode : int { Edit = 0, ReadOnly = 1 };

    LumAboutDlg();
    ~LumAboutDlg() override;

    /// Shows the file and runs.
    /// @param title  empty: the template's
    /// @return 1 after "Ok", 0 after "Cancel" or Escape
    LPARAM Show(CWin* owner, const CString& title, const CString& file_name, Mode mode);

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    /// The editor: Escape in it cancels the dialog.
    class Editor : public CEdit {
    public:
        bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    };

    bool OnInitialise();
    bool OnCommand(int control_id);
    bool OnColourEditor(HDC context, HWND control);
    void PlaceEditor();
    void Save();
    void ChooseEditorFont();

    Editor editor_;
    EditedTextFile file_;
    CString file_name_;
    Mode mode_ = Mode::ReadOnly;
    bool has_picture_ = false;
    HFONT font_ = nullptr;   ///< owned
    HBRUSH paper_ = nullptr; ///< owned; behind the text
};

} // namespace kelvo
