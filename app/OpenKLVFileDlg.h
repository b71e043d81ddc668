#pragma once
// The player's dialog for opening a film: the framework's file dialog with the first image of the
// selected film beside it. The image is decoded aside (PreviewDecoder); the dialog never waits.

#include "app/PreviewDecoder.h"
#include "app/PreviewView.h"
#include "framework/base/CString.h"
#include "framework/window/CDialog.h"

#include <cstdint>
#include <memory>

namespace kelvo {

class OpenKLVFileDlg : public CDialog {
public:
    /// @param decode  what makes the preview of a file, on threads of its own
    explicit OpenKLVFileDlg(PreviewDecoder::Decode decode = &DecodePreview);
    ~OpenKLVFileDlg() override;

    /// Shows the dialog.
    /// @param owner              inert meanwhile; may be null
    /// @param initial_file_name  the film to start with, or a directory (with its separator at the
    ///                           end); empty for the program's directory
    /// @param filter             pairs of a description and its patterns, each text closed by "|"
    /// @return the path that was chosen; empty when cancelled
    CString Run(CWin* owner, const CString& initial_file_name, const CString& filter,
                const CString& title);

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    const PreviewView& PreviewArea() const { return preview_; }

private:
    bool OnInitDialog();
    bool OnNotify(LPARAM lparam);
    void OnSelectionChanged();
    bool OnPreviewDecoded(std::uint32_t number);
    void ShowNothing();
    void ShowNote(const char* text);
    CString SelectedPath() const;

    PreviewDecoder decoder_;
    PreviewView preview_;
    CString selected_path_;
};

} // namespace kelvo
